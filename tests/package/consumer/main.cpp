#include <crawler/CrawlerBasicImporterParser.h>
#include <host/AuxFileInfoInterface.h>

int main()
{
    CrawlerBasicImporterParser parser;
    parser.appendRawFilePath("run_300/flow.vtu");
    parser.applyMetadataPatternList({MetadataPattern("run_", MetadataPattern::NumberValue)});
    const bool works = parser.numDefinedCases() == 1 && parser.caseMetadataSValue(0, 0) == "300" &&
                       parser.crawlerFilePathList().front()->isMatched();
    return works ? 0 : 1;
}
