#include <crawler/AuxFileIdentifierValidator.h>
#include <crawler/CrawlerBasicImporterParser.h>
#include <crawler/FolderCrawler.h>
#include <crawler/MetadataFileCrawler.h>
#include <crawler/SyntaxNameFilter.h>
#include <host/AuxFileCollectionInterface.h>
#include <host/AuxFileInfoInterface.h>
#include <host/ExceptionBase.h>
#include <host/FileInfoInterface.h>
#include <host/ImportLoadContextInterface.h>
#include <host/SignalConnectionCollection.h>
#include <host/TagValidator.h>

class Progress : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void enter(const QString& /*folder*/) {}
};

int main()
{
    CrawlerBasicImporterParser parser;
    parser.appendRawFilePath("run_300/flow.vtu");
    parser.applyMetadataPatternList({MetadataPattern("run_", MetadataPattern::NumberValue)});
    const auto file = parser.crawlerFilePathList().front();
    const bool works = parser.numDefinedCases() == 1 && parser.caseMetadataSValue(0, 0) == "300" &&
                       file->isMatched();
    const bool asksTheFramework = file->type() == AuxFileInfoInterface::ImageFile;
    const bool hasSlots = Progress::staticMetaObject.indexOfSlot("enter(QString)") >= 0;
    return works && asksTheFramework && hasSlots ? 0 : 1;
}

#include "main.moc"
