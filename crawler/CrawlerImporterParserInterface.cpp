#include "crawler/CrawlerImporterParserInterface.h"

CrawlerImporterParserInterface::~CrawlerImporterParserInterface() = default;
