#include "casetable/suggesting/Suggest.h"

#include <algorithm>
#include <list>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/crawler/PlainMatching.h"

namespace casetable {
namespace tests {

namespace {

using Paths = std::list<std::string>;

// The markers in the order of their columns, with "n " or "s " before each.
std::vector<std::string> markers(const Suggestion& suggestion)
{
    std::vector<std::string> markers;
    for (const SuggestedPattern& suggested : suggestion.patterns)
        markers.push_back(
            (suggested.pattern.valueType == MetadataPattern::NumberValue ? "n " : "s ") +
            suggested.pattern.pattern);
    return markers;
}

std::vector<std::string> markers(const Paths& paths)
{
    return markers(suggest(paths));
}

using Markers = std::vector<std::string>;
using TwoFiles = std::pair<std::string, std::string>;

std::vector<std::vector<std::string>> samples(const Suggestion& suggestion)
{
    std::vector<std::vector<std::string>> samples;
    for (const SuggestedPattern& suggested : suggestion.patterns)
        samples.push_back(suggested.sample);
    return samples;
}

using Samples = std::vector<std::vector<std::string>>;

// All that is said about a suggestion is what a parser of its own finds.
void expectHonest(const Paths& paths, const Suggestion& suggestion)
{
    EXPECT_EQ(suggestion.files, std::set<std::string>(paths.begin(), paths.end()).size());
    std::vector<MetadataPattern> patterns;
    for (const SuggestedPattern& suggested : suggestion.patterns)
        patterns.push_back(suggested.pattern);
    CrawlerBasicImporterParser parser;
    for (const std::string& path : paths)
        parser.appendRawFilePath(path);
    ASSERT_NO_THROW(parser.applyMetadataPatternList(patterns)) << plain::describe(patterns);
    std::size_t matched = 0;
    std::vector<std::set<std::string>> values(patterns.size());
    for (const auto& file : parser.crawlerFilePathList()) {
        if (!file->isMatched())
            continue;
        ++matched;
        for (std::size_t k = 0; k < patterns.size(); ++k)
            values[k].insert(parser.caseMetadataSValue(file->caseIndex(), k));
    }
    EXPECT_EQ(suggestion.matchedFiles, matched);
    EXPECT_EQ(suggestion.cases, parser.numDefinedCases());
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        EXPECT_FALSE(patterns[k].pattern.empty());
        EXPECT_EQ(suggestion.patterns[k].valueCount, values[k].size());
        EXPECT_GE(values[k].size(), 2u);
        EXPECT_EQ(suggestion.patterns[k].sample.size(), std::min<std::size_t>(values[k].size(), 5));
        for (const std::string& value : suggestion.patterns[k].sample)
            EXPECT_EQ(values[k].count(value), 1u) << value;
    }
}

void expectSame(const Suggestion& one, const Suggestion& other)
{
    EXPECT_EQ(markers(one), markers(other));
    EXPECT_EQ(samples(one), samples(other));
    EXPECT_EQ(one.files, other.files);
    EXPECT_EQ(one.matchedFiles, other.matchedFiles);
    EXPECT_EQ(one.cases, other.cases);
    EXPECT_EQ(one.unmarked, other.unmarked);
    EXPECT_EQ(one.mixed.sameName, other.mixed.sameName);
    EXPECT_EQ(one.mixed.likeNames, other.mixed.likeNames);
}

Paths shuffled(const Paths& paths, plain::Random& random)
{
    std::vector<std::string> all(paths.begin(), paths.end());
    for (std::size_t i = all.size(); i > 1; --i)
        std::swap(all[i - 1], all[plain::below(random, i)]);
    return Paths(all.begin(), all.end());
}

} // namespace

TEST(Suggest, FindsValuesInFolderNames)
{
    const Paths paths = {"wingA/Mach0.80/AoA-2.5/flow.vtu",
                         "wingA/Mach0.80/AoA-2.5/forces.dat",
                         "wingA/Mach0.85/AoA2.5/flow.vtu",
                         "wingA/Mach0.85/AoA2.5/forces.dat",
                         "wingB/Mach0.80/AoA-2.5/flow.vtu",
                         "wingB/Mach0.80/AoA0.0/forces.dat",
                         "geometry/planform.txt"};

    const Suggestion suggestion = suggest(paths);

    EXPECT_EQ(markers(suggestion), Markers({"s wing", "n Mach", "n AoA"}));
    EXPECT_EQ(samples(suggestion), Samples({{"A", "B"}, {"0.80", "0.85"}, {"-2.5", "0.0", "2.5"}}));
    EXPECT_EQ(suggestion.files, 7u);
    EXPECT_EQ(suggestion.matchedFiles, 6u);
    EXPECT_EQ(suggestion.cases, 4u);
}

TEST(Suggest, FindsValuesInFileNames)
{
    EXPECT_EQ(markers(Paths{"pressure_T300_P5.dat", "velocity_T300_P5.dat", "pressure_T350_P5.dat",
                            "velocity_T350_P5.dat", "pressure_T350_P6.dat"}),
              Markers({"n T", "n P"}));
}

TEST(Suggest, FindsValuesInFoldersAndFileNamesTogether)
{
    EXPECT_EQ(markers(Paths{"Mach0.8/AoA2.dat", "Mach0.8/AoA4.dat", "Mach0.9/AoA2.dat",
                            "Mach0.9/AoA4.dat"}),
              Markers({"n Mach", "n AoA"}));
}

TEST(Suggest, TakesEachSeparatorIntoTheMarker)
{
    for (const std::string separator : {"_", "-", "=", ".", " ", "__"}) {
        SCOPED_TRACE(separator);
        Paths paths;
        for (const char* values : {"300 5", "350 5", "350 7"})
            paths.push_back("T" + separator + std::string(values, 3) + "/P" + separator +
                            (values + 4) + "/flow.vtu");
        EXPECT_EQ(markers(paths), Markers({"n T" + separator, "n P" + separator}));
    }
}

TEST(Suggest, FindsKeysAndValuesDividedByEqualsSigns)
{
    EXPECT_EQ(markers(Paths{"Mach=0.80/alpha=-2/flow.vtu", "Mach=0.80/alpha=-4/flow.vtu",
                            "Mach=0.85/alpha=-2/flow.vtu"}),
              Markers({"n Mach=", "n alpha="}));
    const Suggestion text =
        suggest({"mat=steel_T=300.dat", "mat=alu_T=300.dat", "mat=steel_T=400.dat"});
    EXPECT_EQ(markers(text), Markers({"s mat=", "n _T="}));
    EXPECT_EQ(samples(text), Samples({{"alu", "steel"}, {"300", "400"}}));
}

TEST(Suggest, KeepsTheNumbersOfNumberedKeys)
{
    EXPECT_EQ(markers(Paths{"x1=1/x2=3/f", "x1=2/x2=3/f", "x1=2/x2=4/f"}),
              Markers({"n x1=", "n x2="}));
    EXPECT_EQ(markers(Paths{"CO2_300/H2_4/f", "CO2_400/H2_4/f", "CO2_400/H2_5/f"}),
              Markers({"n CO2_", "n H2_"}));
}

TEST(Suggest, TellsASignFromASeparator)
{
    EXPECT_EQ(markers(Paths{"run-0007/x", "run-0008/x"}), Markers({"n run-"}));
    EXPECT_EQ(samples(suggest({"AoA-2.5/x", "AoA+2.5/x", "AoA0/x"})),
              Samples({{"-2.5", "0", "+2.5"}}));
    EXPECT_EQ(samples(suggest({"T1e999/x", "T1D2/x", "T-1e999/x", "T5/x"})),
              Samples({{"-1e999", "5", "1D2", "1e999"}}));
    EXPECT_EQ(markers(Paths{"AoA-2.5/x", "AoA2.5/x"}), Markers({"n AoA"}));
}

TEST(Suggest, ReadsADateAsOneValue)
{
    const Suggestion folders =
        suggest({"log_2024-01-31_Re5/x", "log_2024-01-31_Re6/x", "log_2024-02-01_Re5/x"});
    EXPECT_EQ(markers(folders), Markers({"s log_", "n _Re"}));
    EXPECT_EQ(samples(folders), Samples({{"2024-01-31", "2024-02-01"}, {"5", "6"}}));
    EXPECT_EQ(samples(suggest({"data/2024-01-31/x", "data/2024-02-01/x"})),
              Samples({{"2024-01-31", "2024-02-01"}}));
    EXPECT_EQ(samples(suggest({"at2024-01-31T12-30-00/x", "at2024-02-01T12-30-00/x"})),
              Samples({{"2024-01-31T12-30-00", "2024-02-01T12-30-00"}}));
    EXPECT_EQ(markers(Paths{"log_2024-01-31.dat", "log_2024-02-01.dat"}), Markers({"s log_"}));
    EXPECT_EQ(markers(Paths{"log_20240131.dat", "log_20240201.dat"}), Markers({"n log_"}));
}

TEST(Suggest, FindsRunNumbers)
{
    const Suggestion suggestion = suggest(
        {"run_0001/T300.dat", "run_0002/T400.dat", "run_0003/T300.dat", "run_0010/T300.dat"});
    EXPECT_EQ(markers(suggestion), Markers({"n run_", "n T"}));
    EXPECT_EQ(suggestion.patterns.at(0).sample, Markers({"0001", "0002", "0003", "0010"}));
}

TEST(Suggest, TakesNamesOfFoldersAsValues)
{
    EXPECT_EQ(markers(Paths{"data/steel/T300/x", "data/steel/T400/x", "data/alu/T300/x"}),
              Markers({"s data/", "n T"}));
    EXPECT_EQ(markers(Paths{"T300/steel/x", "T300/alu/x", "T400/steel/x"}),
              Markers({"n T", "s /"}));
    EXPECT_EQ(markers(Paths{"data/steel_T300/x", "data/alu_T300/x", "data/alu_T400/x"}),
              Markers({"s data/", "n _T"}));
    EXPECT_EQ(samples(suggest({"runs/a3f9c2/x", "runs/77b2c1/x", "runs/0b11ee/x"})),
              Samples({{"0b11ee", "77b2c1", "a3f9c2"}}));
}

TEST(Suggest, TakesNamesOfFoldersWithNumbersAsValuesToo)
{
    Paths paths;
    for (const std::string data : {"cifar10/", "imagenet/", "mnist/"}) {
        for (const std::string model : {"resnet50/", "vit_b16/"})
            paths.push_back("outputs/" + data + model + "metrics.json");
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"s /", "s /"}));
    EXPECT_EQ(samples(suggestion),
              Samples({{"cifar10", "imagenet", "mnist"}, {"resnet50", "vit_b16"}}));
}

TEST(Suggest, TakesTheFirstWordsOfFoldersThatAreCombinedWithOthersAsValues)
{
    const Suggestion suggestion =
        suggest({"all/water-hot/x", "all/water-cold/x", "all/oil-hot/x", "all/oil-cold/x"});
    EXPECT_EQ(markers(suggestion), Markers({"s all/", "s -"}));
    EXPECT_EQ(samples(suggestion), Samples({{"oil", "water"}, {"cold", "hot"}}));
}

TEST(Suggest, TakesNoNamesOfFoldersThatHoldDifferentThings)
{
    EXPECT_EQ(markers(Paths{"all/src/main.cpp", "all/src/help.cpp", "all/doc/guide.md",
                            "all/doc/index.md"}),
              Markers());
}

TEST(Suggest, CutsTheCommonBeginningOfNamesBetweenWords)
{
    EXPECT_EQ(markers(Paths{"wingA/x", "wingB/x"}), Markers({"s wing"}));
    EXPECT_EQ(markers(Paths{"Mach0.80/x", "Mach0.85/x"}), Markers({"n Mach"}));
    EXPECT_EQ(markers(Paths{"run1000/x", "run1001/x"}), Markers({"n run"}));
    EXPECT_EQ(markers(Paths{"in/alpha/x", "in/aluminium/x"}), Markers({"s in/"}));
    EXPECT_EQ(markers(Paths{"wingAlpha_Mach0.8/x", "wingBeta_Mach0.9/x"}),
              Markers({"s wing", "n _Mach"}));
}

TEST(Suggest, MakesAMarkerLongerThatIsFoundTooEarly)
{
    EXPECT_EQ(markers(Paths{"Test/T300/x", "Test/T400/x"}), Markers({"n /T"}));
    EXPECT_EQ(markers(Paths{"Test_T300.x", "Test_T400.x"}), Markers({"n _T"}));
    EXPECT_EQ(markers(Paths{"data/Titan/T300/x", "data/steel/T300/x", "data/steel/T400/x"}),
              Markers({"s /", "n /T"}));
}

TEST(Suggest, GivesEachOfSeveralNumbersAMarker)
{
    EXPECT_EQ(markers(Paths{"data/300/5/x", "data/300/6/x", "data/400/5/x"}),
              Markers({"n /", "n /"}));
    const Suggestion suggestion =
        suggest({"run_0007_0.8_2.5/x", "run_0008_0.8_3.5/x", "run_0009_0.9_2.5/x"});
    EXPECT_EQ(markers(suggestion), Markers({"n _", "n _", "n _"}));
    EXPECT_EQ(suggestion.patterns.at(2).sample, Markers({"2.5", "3.5"}));
}

TEST(Suggest, KeepsASingleLetterThatTheNextMarkerWouldRefuse)
{
    const Suggestion suggestion =
        suggest({"wingA_Mach0.8/x", "wingB_Mach0.8/x", "wingB_Mach0.9/x"});
    EXPECT_EQ(markers(suggestion), Markers({"s wing", "n Mach"}));
    EXPECT_EQ(suggestion.cases, 3u);
}

TEST(Suggest, LeavesOutWhatRepeatsAValueBefore)
{
    EXPECT_EQ(markers(Paths{"sub01/sub01_T300.dat", "sub01/sub01_T400.dat", "sub02/sub02_T300.dat",
                            "sub02/sub02_T400.dat"}),
              Markers({"n sub", "n T"}));
    EXPECT_EQ(markers(Paths{"log2024-01-31/data_20240131.csv", "log2024-02-01/data_20240201.csv"}),
              Markers({"s log"}));
    Paths runs;
    for (int run = 3; run < 12; ++run)
        runs.push_back("run_" + std::string(run < 10 ? "000" : "00") + std::to_string(run) +
                       "/out_" + std::to_string(run) + ".dat");
    EXPECT_EQ(markers(runs), Markers({"n run_"}));
    Paths few;
    for (const std::string run : {"0", "1", "2"})
        few.push_back("run_00" + run + "/run_" + run + ".dat");
    EXPECT_EQ(markers(few), Markers({"n run_"}));
}

TEST(Suggest, KeepsFewShortValuesThatAgreeByChanceAndTheOthersThatBelongTogether)
{
    EXPECT_EQ(markers(Paths{"nx10_ny10/x", "nx20_ny20/x"}), Markers({"n nx", "n ny"}));
    EXPECT_EQ(markers(Paths{"run_0001/T300/x", "run_0002/T350/x", "run_0003/T400/x"}),
              Markers({"n run_", "n T"}));
}

TEST(Suggest, FindsKeysAndValuesDividedByDashesInFileNames)
{
    Paths paths;
    for (const std::string sub : {"01", "02", "03"}) {
        for (const std::string ses : {"pre", "post"}) {
            for (const std::string task : {"rest", "nback"}) {
                for (const std::string run : {"01", "02"})
                    paths.push_back("sub-" + sub + "/ses-" + ses + "/func/sub-" + sub + "_ses-" +
                                    ses + "_task-" + task + "_run-" + run + "_bold.nii.gz");
            }
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"n sub-", "s ses-", "s _task-", "n _run-"}));
    EXPECT_EQ(suggestion.cases, 24u);
    // One alone may be any text.
    EXPECT_EQ(markers(Paths{"run1/wake-upper.dat", "run1/wake-lower.dat", "run2/wake-upper.dat",
                            "run2/wake-lower.dat"}),
              Markers({"n run"}));
}

TEST(Suggest, EndsAValueOfSeveralWordsBeforeTheNextKey)
{
    const Suggestion equals =
        suggest({"model=resnet50,opt=adam,lr=1e-3/x", "model=resnet50,opt=sgd,lr=1e-2/x",
                 "model=vit_b_16,opt=adam,lr=1e-2/x", "model=vit_b_16,opt=sgd,lr=1e-3/x"});
    EXPECT_EQ(markers(equals), Markers({"s model=", "s ,opt=", "n ,lr="}));
    EXPECT_EQ(equals.patterns.at(0).sample, Markers({"resnet50", "vit_b_16"}));
    const Suggestion dashes = suggest({"in/acq-highRes_dir-AP_x.dat", "in/acq-low2_dir-PA_x.dat"});
    EXPECT_EQ(markers(dashes), Markers({"s acq-", "s _dir-"}));
    EXPECT_EQ(samples(dashes), Samples({{"highRes", "low2"}, {"AP_x", "PA_x"}}));
    // It would be read up to the end.
    EXPECT_EQ(
        markers(Paths{"sub-01/sub-01_task-go_bold.nii", "sub-01/sub-01_task-go_events.tsv",
                      "sub-02/sub-02_task-stop_bold.nii", "sub-02/sub-02_task-stop_events.tsv"}),
        Markers({"n sub-"}));
}

TEST(Suggest, TakesTextInFileNamesAsAValueWhereFoldersDoNotTellFilesApart)
{
    Paths flat;
    Paths folders;
    for (const std::string n : {"10", "20", "40"}) {
        for (const std::string word : {"bicg", "cg", "gmres"})
            flat.push_back("solver_" + word + "_n" + n + ".csv");
        for (const std::string word : {"pressure", "velocity"})
            folders.push_back("n" + n + "/out_" + word + ".csv");
        for (const std::string name : {"flow.vtu", "forces.dat", "solver.log"})
            folders.push_back("n" + n + "/" + name);
    }
    const Suggestion suggestion = suggest(flat);
    EXPECT_EQ(markers(suggestion), Markers({"s solver_", "n _n"}));
    EXPECT_EQ(suggestion.cases, 9u);
    EXPECT_EQ(markers(folders), Markers({"n n"}));
}

TEST(Suggest, DoesNotSplitRunsInFoldersThatNoMarkerReads)
{
    Paths paths;
    for (const std::string folder : {"steel/", "alu/", "brass/"}) {
        for (const std::string name : {"out_pressure.csv", "out_velocity.csv"})
            paths.push_back(folder + name);
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers());
    EXPECT_EQ(suggestion.unmarked, Markers({"alu", "brass", "steel"}));
}

TEST(Suggest, FindsTheWordThatSeveralNamesBeginWith)
{
    Paths paths;
    for (const std::string version : {"v1.0.2/", "v1.1.0/", "v2.0.0/"}) {
        for (const std::string mesh : {"meshcoarse/", "meshfine/", "meshmedium/"})
            paths.push_back(version + mesh + "flow.vtu");
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"s v", "s mesh"}));
    EXPECT_EQ(samples(suggestion),
              Samples({{"1.0.2", "1.1.0", "2.0.0"}, {"coarse", "fine", "medium"}}));
    EXPECT_EQ(markers(Paths{"in/stay/x", "in/star/x", "in/stab/x"}), Markers({"s in/"}));
    EXPECT_EQ(markers(Paths{"in/mesh/x", "in/meshfine/x", "in/meshcoarse/x"}), Markers({"s in/"}));
    EXPECT_EQ(markers(Paths{"in/thermal/x", "in/thermite/x", "in/thermo/x"}), Markers({"s in/"}));
    EXPECT_EQ(markers(Paths{"mat=steelsoft/x", "mat=steelhard/x", "mat=steelmild/x"}),
              Markers({"s mat="}));
}

TEST(Suggest, ReadsNoVersionWithoutItsEnd)
{
    const Suggestion suggestion =
        suggest({"v1.0.1/coarse/x", "v1.0.2/fine/x", "v1.0.1/fine/x", "v1.0.2/coarse/x"});
    EXPECT_EQ(markers(suggestion), Markers({"s /"}));
    EXPECT_EQ(suggestion.mixed.sameName, TwoFiles("v1.0.1/coarse/x", "v1.0.2/coarse/x"));
}

TEST(Suggest, TellsOnlyOfFilesThatAreCertainlyOfDifferentRuns)
{
    Paths paths;
    for (const std::string run : {"run1/", "run2/"}) {
        for (const std::string name : {"mesh", "flow", "in/log", "out/log", "forces"})
            paths.push_back(run + name);
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"n run"}));
    EXPECT_EQ(suggestion.mixed.sameName, TwoFiles());
    EXPECT_EQ(suggestion.mixed.likeNames, TwoFiles());
}

TEST(Suggest, TakesTextInFileNamesAsAValueWhereNumbersInThemVaryInAFolderToo)
{
    Paths stains;
    Paths repeated;
    Paths steps;
    for (const std::string folder : {"Z5", "Z6", "Z7"}) {
        for (const std::string number : {"001", "002", "003"}) {
            for (const std::string word : {"DAPI", "GFP"}) {
                stains.push_back(folder + "/stain-" + word + "_dose" + number.back() + ".tif");
                repeated.push_back(folder + "/stain-" + word + "_at_" + folder + ".tif");
                steps.push_back(folder + "/out_" + word + "_" + number + ".vtu");
            }
        }
    }
    const Suggestion suggestion = suggest(stains);
    EXPECT_EQ(markers(suggestion), Markers({"n Z", "s stain-", "n _dose"}));
    EXPECT_EQ(suggestion.cases, 18u);
    EXPECT_EQ(markers(repeated), Markers({"n Z"}));
    EXPECT_EQ(markers(steps), Markers({"n Z"}));
}

// No constant text stands before them, and they may tell what is in a file.
TEST(Suggest, TakesNoFirstWordsOfFileNames)
{
    Paths paths;
    for (const std::string folder : {"run1/", "run2/", "run4/"}) {
        for (const std::string number : {"300", "350"}) {
            for (const std::string word : {"pressure", "velocity"})
                paths.push_back(folder + word + "_T" + number + ".dat");
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"n run", "n T"}));
    EXPECT_EQ(suggestion.mixed.likeNames,
              TwoFiles("run1/pressure_T300.dat", "run1/velocity_T300.dat"));
}

TEST(Suggest, FindsNumbersBehindDifferentFirstWordsOfFiles)
{
    Paths paths;
    for (const std::string material : {"alu", "steel"}) {
        for (const std::string force : {"100", "200", "300"}) {
            for (const std::string version : {"2.1", "2.2"})
                paths.push_back(material + "_" + force + "N_2024-05-01_v" + version + ".dat");
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"n _", "n _v"}));
    EXPECT_EQ(suggestion.cases, 6u);
    EXPECT_EQ(suggestion.mixed.likeNames,
              TwoFiles("alu_100N_2024-05-01_v2.1.dat", "steel_100N_2024-05-01_v2.1.dat"));
}

TEST(Suggest, ReadsADecimalCommaAsText)
{
    Paths paths;
    for (const std::string model : {"SA", "SST", "kEps"}) {
        for (const std::string mach : {"0,7", "0,75", "0,8"}) {
            for (const std::string angle : {"0", "2"})
                paths.push_back(model + "_M" + mach + "_A" + angle + ".csv");
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"s M", "n _A"}));
    EXPECT_EQ(samples(suggestion), Samples({{"0,7", "0,75", "0,8"}, {"0", "2"}}));
    EXPECT_EQ(suggestion.mixed.likeNames, TwoFiles("SA_M0,75_A0.csv", "SST_M0,75_A0.csv"));
}

TEST(Suggest, ReadsWholeNumbersAndUnitsWithDecimalCommas)
{
    Paths paths;
    for (const std::string folder : {"R1/", "R2/", "R4/"}) {
        for (const std::string word : {"alu", "steel"}) {
            for (const std::string time : {"0,7", "0,75", "1"})
                paths.push_back(folder + word + "_T" + time + "s.csv");
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"n R", "s T"}));
    EXPECT_EQ(suggestion.patterns.at(1).sample, Markers({"0,75s", "0,7s", "1s"}));
    EXPECT_EQ(suggestion.matchedFiles, 18u);
}

TEST(Suggest, TakesDatesThatOccurInAllFoldersForNoCounters)
{
    Paths paths;
    for (const std::string river : {"gauge_Rhein/", "gauge_Aare/"}) {
        for (const std::string year : {"2020", "2021"}) {
            for (const std::string day : {"01-11", "01-12", "02-01"})
                paths.push_back(river + year + "/" + year + "-" + day + "_Q" + year.back() +
                                ".csv");
        }
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"s gauge_", "n /", "s /", "n _Q"}));
    EXPECT_EQ(suggestion.cases, 12u);
}

TEST(Suggest, DoesNotGiveUpAFolderForADateInFileNames)
{
    Paths paths;
    for (const std::string station : {"A/", "B/"}) {
        for (const std::string day : {"2024-01-31", "2024-02-01"})
            paths.push_back("station_" + station + day + ".csv");
    }
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion), Markers({"s station_"}));
    EXPECT_EQ(suggestion.mixed.likeNames,
              TwoFiles("station_A/2024-01-31.csv", "station_A/2024-02-01.csv"));
}

TEST(Suggest, TakesFolderNamesAsWholesWhereOnlySomeBeginAlike)
{
    Paths paths;
    for (const std::string place : {"lab Ulm", "lab Kiel", "field_outside"}) {
        for (const std::string cell : {"01", "02"})
            paths.push_back(place + "/cell " + cell + "/data.csv");
    }
    EXPECT_EQ(suggest(paths).unmarked, Markers({"field_outside", "lab Kiel", "lab Ulm"}));
    for (std::string& path : paths)
        path.insert(0, "in/");
    EXPECT_EQ(markers(paths), Markers({"s in/", "n cell "}));
}

TEST(Suggest, LeavesOutWhatDoesNotVary)
{
    EXPECT_EQ(markers(Paths{"v2/T300/Re5/x", "v2/T400/Re5/x"}), Markers({"n T"}));
    EXPECT_EQ(markers(Paths{"v2/T300/x", "v2/T300/y"}), Markers());
}

TEST(Suggest, DoesNotTakeExtensionsAsValues)
{
    EXPECT_EQ(markers(Paths{"T1/mesh.h5", "T1/mesh.h6", "T2/mesh.h5", "T2/mesh.h6"}),
              Markers({"n T"}));
    EXPECT_EQ(markers(Paths{"all/mesh.msh4", "all/mesh.msh2"}), Markers());
}

TEST(Suggest, DoesNotSplitTheFilesOfARun)
{
    EXPECT_EQ(markers(Paths{"run1/wake_upper.dat", "run1/wake_lower.dat", "run2/wake_upper.dat",
                            "run2/wake_lower.dat"}),
              Markers({"n run"}));
    Paths steps;
    for (const std::string run : {"run_1/", "run_2/", "run_3/"}) {
        for (const std::string step : {"0001", "0002", "0003", "0004"})
            steps.push_back(run + "flow_" + step + ".vtu");
    }
    EXPECT_EQ(markers(steps), Markers({"n run_"}));
    Paths images;
    for (const std::string run : {"run_1/", "run_2/", "run_3/"}) {
        for (const std::string image : {"000", "001", "002"})
            images.push_back(run + "IM" + image + ".dcm");
    }
    EXPECT_EQ(markers(images), Markers({"n run_"}));
}

TEST(Suggest, KeepsNumbersInFileNamesThatStandInFewFolders)
{
    Paths paths;
    for (int folder = 0; folder < 6; ++folder) {
        for (const std::string role : {"_u.dat", "_v.dat", "_w.dat"})
            paths.push_back("Mach0." + std::to_string(folder) + "/out_00" +
                            std::to_string(folder / 2 + 1) + role);
    }
    EXPECT_EQ(markers(paths), Markers({"n Mach", "n out_"}));
}

TEST(Suggest, IsNotMisledByFilesThatDoNotFit)
{
    Paths paths = {"README", "geometry/wing.stl", "geometry/T5/flap.stl", "notes/2024-01-31.md"};
    for (int i = 0; i < 10; ++i)
        paths.push_back("T" + std::to_string(300 + i) + "/P" + std::to_string(i) + "/flow.vtu");
    EXPECT_EQ(markers(paths), Markers({"n T", "n P"}));
    EXPECT_EQ(suggest(paths).matchedFiles, 10u);
}

TEST(Suggest, GoesForTheLargestOfSeveralGroups)
{
    EXPECT_EQ(markers(Paths{"A/T300/x", "A/T400/x", "A/T500/x", "B/Mach1/y", "B/Mach2/y"}),
              Markers({"n T"}));
}

TEST(Suggest, TellsWhatStandsAtTheBeginningWhereNoMarkerCanBe)
{
    const Suggestion suggestion =
        suggest({"steel/T300/x", "steel/T400/x", "alu/T300/x", "alu/T400/x"});
    EXPECT_EQ(markers(suggestion), Markers({"n T"}));
    EXPECT_EQ(suggestion.unmarked, Markers({"alu", "steel"}));
    EXPECT_EQ(suggest({"T300/x", "T400/x"}).unmarked, Markers());
    const Suggestion files =
        suggest({"2024-01-31_run1.csv", "2024-01-31_run2.csv", "2024-02-01_run1.csv", "README"});
    EXPECT_EQ(markers(files), Markers({"n _run"}));
    EXPECT_EQ(files.unmarked, Markers({"2024-01-31", "2024-02-01"}));
    EXPECT_EQ(suggest({"T300/x", "T400/x", "T500/x", "1.txt", "2.txt"}).unmarked, Markers());
    EXPECT_EQ(suggest({"alu/x", "steel/x", "1.txt", "2.txt", "3.txt"}).unmarked,
              Markers({"alu", "steel"}));
}

// Only the names of folders tell what their files belong to.
TEST(Suggest, TakesTextInFileNamesBehindAValueAtTheirBeginningToo)
{
    EXPECT_EQ(markers(Paths{"2024-01-31_n10_cg.csv", "2024-01-31_n20_cg.csv",
                            "2024-02-01_n10_bicg.csv", "2024-02-01_n20_bicg.csv"}),
              Markers({"n _n", "s _"}));
}

TEST(Suggest, SaysNothingWhereNothingCanBeSaid)
{
    for (const Paths& paths :
         {Paths{}, Paths{"T300/x"}, Paths{"a.dat", "b.dat", "c.dat"}, Paths{"300", "400"},
          Paths{""}, Paths{"/", "//"}, Paths{"src/a.cpp", "src/b.cpp", "doc/c.md", "README"}}) {
        SCOPED_TRACE(testing::PrintToString(paths));
        const Suggestion suggestion = suggest(paths);
        EXPECT_EQ(markers(suggestion), Markers());
        EXPECT_EQ(suggestion.files, paths.size());
        EXPECT_EQ(suggestion.matchedFiles, 0u);
        EXPECT_EQ(suggestion.cases, 0u);
    }
}

TEST(Suggest, TakesAnyBytes)
{
    EXPECT_EQ(markers(Paths{"\xff\xfe=1/x", "\xff\xfe=2/x"}), Markers({"n \xff\xfe="}));
    EXPECT_EQ(markers(Paths{"a\n'1/x", "a\n'2/x"}), Markers({"n a\n'"}));
    EXPECT_EQ(markers(Paths{"\xce\xb1=1/x", "\xce\xb1=2/x"}), Markers({"n \xce\xb1="}));
}

TEST(Suggest, FindsWhatVeryManyNamesAtOnePlaceShare)
{
    plain::Random random(99);
    Paths paths;
    for (int i = 0; i < 20000; ++i)
        paths.push_back("T" + std::to_string(300 + i % 7) + "_" +
                        plain::randomText(random, "abcdefxyz0123456789", 12) + "x.dat");
    const Suggestion suggestion = suggest(paths);
    EXPECT_EQ(markers(suggestion).at(0), "n T");
    EXPECT_EQ(suggestion.patterns.at(0).valueCount, 7u);
    expectHonest(paths, suggestion);
    expectSame(suggestion, suggest(shuffled(paths, random)));
}

TEST(Suggest, CountsAPathThatIsGivenTwiceOnce)
{
    const Suggestion suggestion = suggest({"T1/x", "T2/x", "T1/x"});
    EXPECT_EQ(suggestion.files, 2u);
    EXPECT_EQ(suggestion.matchedFiles, 2u);
}

// Trees made from known markers: as many cases must be found as were made.
TEST(Suggest, FindsTheCasesOfRandomTemplates)
{
    plain::Random random(20240131);
    const std::vector<std::string> words = {"Mach", "AoA", "Re", "T", "pressure", "run", "beta"};
    const std::vector<std::string> separators = {"", "_", "=", "-", "."};
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> keys = words;
        std::shuffle(keys.begin(), keys.end(), random);
        keys.resize(1 + plain::below(random, 4));
        const std::string separator = separators[plain::below(random, separators.size())];
        // Whether the next key stands in the same name.
        std::vector<bool> joined(keys.size());
        std::generate(joined.begin(), joined.end(), [&] { return plain::below(random, 2) == 0; });
        const bool inFileName = plain::below(random, 3) == 0;
        const std::size_t roles = 1 + plain::below(random, 4);

        std::set<std::vector<std::size_t>> cases;
        Paths paths;
        const std::size_t count = 3 + plain::below(random, 20);
        for (std::size_t i = 0; i < count; ++i) {
            std::vector<std::size_t> values;
            std::string path = "campaign/";
            for (std::size_t k = 0; k < keys.size(); ++k) {
                // The first two differ everywhere.
                values.push_back(i < 2 ? i : plain::below(random, 4));
                path += (k == 0      ? ""
                         : joined[k] ? "_"
                                     : "/") +
                        keys[k] + separator + std::to_string(100 + 75 * values.back());
            }
            cases.insert(values);
            for (std::size_t role = 0; role < roles; ++role)
                paths.push_back(path + (inFileName ? "" : "/" + std::string(1, char('u' + role))) +
                                ".dat" + (inFileName ? std::string(1, char('u' + role)) : ""));
        }
        const std::size_t notes = std::set<std::string>(paths.begin(), paths.end()).size() / 4;
        for (std::size_t i = 0; i < notes; ++i)
            paths.push_back("notes/" + std::string(1 + i, 'n') + ".txt");

        SCOPED_TRACE(testing::PrintToString(paths));
        const Suggestion suggestion = suggest(paths);
        EXPECT_EQ(suggestion.cases, cases.size()) << testing::PrintToString(markers(suggestion));
        EXPECT_EQ(suggestion.patterns.size(), keys.size());
        expectHonest(paths, suggestion);
        expectSame(suggestion, suggest(shuffled(paths, random)));
    }
}

TEST(Suggest, IsHonestAndTheSameInAnyOrderForAnyPaths)
{
    plain::Random random(4711);
    for (const std::string& alphabet :
         {std::string("aB1/"), std::string("aT12_/-."), std::string("ab01=/.\\+-e"),
          std::string("a1/\n'\xff\x80\0", 8)}) {
        for (int round = 0; round < 400; ++round) {
            Paths paths;
            const std::size_t count = plain::below(random, 30);
            const std::string beginning = plain::randomText(random, alphabet, 4);
            for (std::size_t i = 0; i < count; ++i)
                paths.push_back(beginning + plain::randomText(random, alphabet, 12));
            SCOPED_TRACE(testing::PrintToString(paths));
            const Suggestion suggestion = suggest(paths);
            expectHonest(paths, suggestion);
            expectSame(suggestion, suggest(shuffled(paths, random)));
            if (testing::Test::HasFailure())
                return;
        }
    }
}

TEST(SuggestionText, ShowsTheCommandTheMarkersAndTheCounts)
{
    const Suggestion suggestion =
        suggest({"wingA/Mach0.80/x", "wingA/Mach0.85/x", "wingB/Mach0.80/x", "README"});
    EXPECT_EQ(suggestionText({suggestion, {"--follow"}, "my results"}),
              "casetable --follow -s wing -n Mach 'my results'\n"
              "\n"
              "marker  type    values  sample\n"
              "wing    text         2  A, B\n"
              "Mach    number       2  0.80, 0.85\n"
              "\n"
              "matches 3 of 4 files, 3 cases\n");
}

TEST(SuggestionText, QuotesValuesWithCommas)
{
    const std::string text = suggestionText({suggest({"in/M0,7/x", "in/M0,75/x"}), {}, "r"});
    EXPECT_NE(text.find("  2  '0,7', '0,75'\n"), std::string::npos) << text;
}

TEST(SuggestionText, ShowsOnlyTheBeginningOfMany)
{
    Paths paths;
    for (int i = 10; i < 2000; ++i)
        paths.push_back("in/T" + std::to_string(i) + "/" + std::string(300, 'x'));
    const std::string text = suggestionText({suggest(paths), {}, "r"});
    EXPECT_NE(text.find("T       number    1990  10, 11, 12, 13, 14, ...\n"), std::string::npos)
        << text;
    const std::string longText = suggestionText(
        {suggest({"in=" + std::string(40, 'a') + "/x", "in=" + std::string(40, 'b') + "/x"}),
         {},
         "r"});
    EXPECT_NE(longText.find("  " + std::string(24, 'a') + "..., " + std::string(24, 'b') + "...\n"),
              std::string::npos)
        << longText;
}

TEST(SuggestionText, EscapesWhatCouldDriveTheTerminal)
{
    const Suggestion suggestion = suggest({"\x1b[=1/x", "\x1b[=2/x"});
    const std::string text = suggestionText({suggestion, {}, "a\nb"});
    EXPECT_EQ(text.substr(0, text.find('\n')), "casetable -n $'\\033[=' $'a\\012b'");
    EXPECT_NE(text.find("\\x1b[="), std::string::npos) << text;
}

TEST(SuggestionText, GivesTheProgramMarkersAndFoldersThatBeginWithADash)
{
    Suggestion suggestion;
    suggestion.patterns = {{MetadataPattern("-x", MetadataPattern::StringValue), 2, {}},
                           {MetadataPattern("-'", MetadataPattern::NumberValue), 2, {}}};
    EXPECT_EQ(commandLine({suggestion, {}, "-r"}), "casetable --string=-x '--number=-'\\''' -- -r");
}

TEST(SuggestionText, QuotesWhatSomeShellsWouldLookUpAsACommand)
{
    Suggestion suggestion;
    suggestion.patterns = {{MetadataPattern("==", MetadataPattern::StringValue), 2, {}},
                           {MetadataPattern("a=", MetadataPattern::StringValue), 2, {}}};
    EXPECT_EQ(commandLine({suggestion, {}, "r"}), "casetable -s '==' -s a= r");
}

TEST(SuggestionText, SaysInOneLineWhyThereIsNothingToSay)
{
    EXPECT_EQ(suggestionText({suggest({"a", "b"}), {}, "r"}),
              "no text is followed by varying values in most paths below r");
    EXPECT_EQ(suggestionText({suggest({"a", "b"}), {}, ""}),
              "no text is followed by varying values in most paths in the list");
}

TEST(SuggestionText, SaysWhatIsNotRead)
{
    const std::string text = suggestionText(
        {suggest({"steel/T300/x", "steel/T400/x", "alu/T300/x", "alu/T400/x"}), {}, "r"});
    EXPECT_NE(text.find("matches 4 of 4 files, 2 cases\n"
                        "different runs may be one case: alu/T300/x and steel/T300/x are not told "
                        "apart\n"
                        "the paths differ at their beginning (alu, steel), "),
              std::string::npos)
        << text;
}

TEST(SuggestionText, SaysThatDifferentRunsMayBeOneCase)
{
    Suggestion suggestion = suggest({"T1/x", "T2/x"});
    suggestion.mixed.sameName = {"T1\n/a/x", "T1\n/b/x"};
    const std::string line =
        "different runs may be one case: T1\\n/a/x and T1\\n/b/x are not told apart\n";
    const std::string text = suggestionText({suggestion, {}, "r"});
    EXPECT_NE(text.find("2 cases\n" + line), std::string::npos) << text;
    suggestion.unmarked = {"a", "b"};
    const std::string both = suggestionText({suggestion, {}, "r"});
    EXPECT_NE(both.find("2 cases\n" + line + "the paths differ at their beginning (a, b), "),
              std::string::npos)
        << both;
}

TEST(SuggestionText, SaysThatFilesOfLikeNamesAreInOneCase)
{
    Suggestion suggestion = suggest({"T1/x", "T2/x"});
    suggestion.mixed.likeNames = {"T1/a_1", "T1/b_1"};
    const std::string text = suggestionText({suggestion, {}, "r"});
    EXPECT_NE(text.find("2 cases\na case holds files of like names, such as T1/a_1 and T1/b_1; if "
                        "these are different runs, a marker is missing\n"),
              std::string::npos)
        << text;
}

TEST(SuggestionText, SaysWhetherTheFolderAboveTellsRunsApart)
{
    Suggestion below = suggest({"T1/x", "T2/x"});
    below.mixed.sameName = {"T1/a/x", "T1/b/x"};
    RunAbove above = {{suggest({"r/T1/x", "r/T2/x"}), {}, "."}, "r"};
    const std::string reason = "2 cases\ndifferent runs may be one case: T1/a/x and T1/b/x are not "
                               "told apart; the folder above as ROOT makes room:\n\n";
    const std::string text = suggestionText({below, {}, "r"}, above);
    EXPECT_NE(text.find(reason), std::string::npos) << text;
    EXPECT_EQ(text.find("r/T1/x"), std::string::npos) << text;

    above.run.suggestion.mixed.likeNames = {"r/T1/x", "r/T1/y"};
    const std::string line =
        "a case holds files of like names, such as r/T1/x and r/T1/y; if these "
        "are different runs, a marker is missing\n";
    const std::string more = suggestionText({below, {}, "r"}, above);
    EXPECT_EQ(more, text + line);
    below = suggest({"300/x", "400/x"});
    const std::string first = suggestionText({below, {}, "r"}, above);
    EXPECT_NE(first.find("2 cases\n" + line + "ROOT is the folder above"), std::string::npos)
        << first;
}

TEST(SuggestionText, AddsTheCommandForTheFolderAbove)
{
    const Paths paths = {"steel/T300/x", "steel/T400/x", "alu/T300/x", "alu/T400/x"};
    Paths pathsAbove;
    for (const std::string& path : paths)
        pathsAbove.push_back("r/" + path);
    const RunAbove above = {{suggest(pathsAbove), {"--follow"}, "."}, "r"};

    const std::string text = suggestionText({suggest(paths), {}, "./r"}, above);

    EXPECT_EQ(text.substr(text.find("matches")),
              "matches 4 of 4 files, 2 cases\n"
              "the paths differ at their beginning (alu, steel), where no marker can stand; the "
              "folder above as ROOT makes room:\n"
              "\n"
              "casetable --follow -s r/ -n T .\n"
              "\n"
              "matches 4 of 4 files, 4 cases; the other folders beside r are read as well, "
              "and their files seldom match\n");
}

TEST(SuggestionText, GivesTheCommandForTheFolderAboveWhereThereIsNoOther)
{
    const Paths paths = {"300/x", "400/x", "500/x"};
    const RunAbove above = {{suggest({"r/300/x", "r/400/x", "r/500/x"}), {}, "."}, "r"};
    EXPECT_EQ(suggestionText({suggest(paths), {}, "r"}, above),
              "casetable -n r/ .\n"
              "\n"
              "marker  type    values  sample\n"
              "r/      number       3  300, 400, 500\n"
              "\n"
              "matches 3 of 3 files, 3 cases\n"
              "ROOT is the folder above: below r the paths differ at their beginning (300, 400, "
              "500), where no marker can stand; the other folders beside r are read as well, and "
              "their files seldom match\n");
}

} // namespace tests
} // namespace casetable
