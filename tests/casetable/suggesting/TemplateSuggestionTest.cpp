#include "casetable/suggesting/TemplateSuggestion.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/templates/Matcher.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

Texts suggest(const Texts& paths)
{
    return suggestTemplates({paths.begin(), paths.end()});
}

// All texts that come of the alternatives, "a{x|y}b" being "axb" and "ayb".
Texts expand(const std::string& text)
{
    const std::size_t begin = text.find('{');
    if (begin == std::string::npos)
        return {text};
    const std::size_t end = text.find('}', begin);
    Texts all;
    for (std::size_t i = begin + 1; i <= end;) {
        const std::size_t next = std::min(text.find('|', i), end);
        for (const std::string& rest : expand(text.substr(end + 1)))
            all.push_back(text.substr(0, begin) + text.substr(i, next - i) + rest);
        i = next + 1;
    }
    return all;
}

Texts expandAll(const Texts& texts)
{
    Texts all;
    for (const std::string& text : texts)
        for (const std::string& path : expand(text))
            all.push_back(path);
    return all;
}

std::size_t countRead(const Texts& templates, const Texts& paths)
{
    std::vector<Matcher> matchers;
    for (const std::string& text : templates)
        matchers.emplace_back(Template(text));
    return static_cast<std::size_t>(
        std::count_if(paths.begin(), paths.end(), [&](const std::string& path) {
            return std::any_of(matchers.begin(), matchers.end(),
                               [&](Matcher& matcher) { return matcher.match(path); });
        }));
}

struct Case {
    Texts paths; // for expandAll()
    Texts templates;
};

void expectSuggestions(const std::vector<Case>& cases)
{
    for (const Case& c : cases)
        EXPECT_EQ(suggest(expandAll(c.paths)), c.templates) << c.paths.front();
}

} // namespace

TEST(TemplateSuggestion, NamesColumnsByWhatStandsInFrontElseByTheirPlace)
{
    expectSuggestions({
        {{"Mach{0.80|0.85}/AoA{-2.5|0.0|2.5}/flow.vtu"},
         {"Mach{Mach:number}/AoA{AoA:number}/flow.vtu"}},
        {{"runs/lr={0.1|0.01},bs={16|32}/log.txt"}, {"runs/lr={lr:number},bs={bs:digits}/log.txt"}},
        {{"run_{01|02|03}/out.csv"}, {"run_{run:digits}/out.csv"}},
        {{"LC-{01|02|12}/a/LC{01|02|12}.csv"}, {"LC-{LC:digits}/a/LC{LC_2:digits}.csv"}},
        {{"{left|right}/{a|b|c}/x_{1|2}.csv"}, {"{dir1}/{dir2}/x_{x:digits}.csv"}},
        {{"wing{A|B|C}/{1|2}.dat"}, {"wing{wing}/{name:digits}.dat"}},
        {{"{20|200}K/{5|10}mm.dat"}, {"{K:digits}K/{mm:digits}mm.dat"}},
        {{"{5|10}mm_{left|right}/{1|2}.dat"}, {"{mm:digits}mm_{dir1:word}/{name:digits}.dat"}},
    });
}

TEST(TemplateSuggestion, MakesOfTheExampleInItsSourceWhatStandsThere)
{
    expectSuggestions(
        {{{"sub-01/anat/sub-01_T1w.nii.gz", "sub-02/anat/sub-02_T1w.nii.gz",
           "sub-01/func/sub-01_run-1_bold.nii.gz", "sub-02/func/sub-02_run-1_bold.nii.gz",
           "sub-03/func/sub-03_run-1_bold.json", "README"},
          {"sub-{sub:digits}/{dir2}/sub-{sub}[_run-{run:digits}]_{name:word}.*"}}});
}

TEST(TemplateSuggestion, UsesNoNameTwiceAndNoneOfTheTablesOwn)
{
    expectSuggestions({
        {{"case{1|2|3}/files{4|5|6}.txt"}, {"case{case_2:digits}/files{files_2:digits}.txt"}},
        {{"x{1|2|3}_x{4|5}.txt"}, {"x{x:digits}_x{x_2:digits}.txt"}},
    });
}

TEST(TemplateSuggestion, KeepsNumbersDatesAndIdentifiersInOneColumn)
{
    expectSuggestions({
        {{"lr{0.1|0.001|1e-05}_s{1|2}.pt"}, {"lr{lr:number}_s{s:digits}.pt"}},
        {{"a_{2024-05-01|2024-05-02|2024-06-11}.csv"}, {"a_{date:text10}.csv"}},
        {{"{2024_05_01|2024_05_02|2024_06_11}/a{1|2}.csv"}, {"{date:text10}/a{a:digits}.csv"}},
        {{"a_{20240501|20240502|20240611}_{123000|124500}.csv"},
         {"a_{date:digits}_{time:digits}.csv"}},
        {{"a_{20240501T101112|20240502T101112|20240611T001112}.csv"}, {"a_{date:text15}.csv"}},
        {{"{0a0a0a0a-1b1b-2c2c-3d3d-4e4e4e4e4e4e|10a0a0a0-1b1b-2c2c-3d3d-4e4e4e4e4e4e}_{1|2}.png"},
         {"{id:text36}_{name:digits}.png"}},
    });
}

TEST(TemplateSuggestion, DividesLettersFromDigitsWhereAllNamesHaveThem)
{
    expectSuggestions({
        {{"R{1|2}C{1|2|3}F{1|2}.png"}, {"R{R:digits}C{C:digits}F{F:digits}.png"}},
        {{"{A|B|C}{01|02|03}_s{1|2}.tif"}, {"{name:word1}{name_2:digits}_s{s:digits}.tif"}},
    });
}

TEST(TemplateSuggestion, MakesPartsThatAreThereOnlySometimesOptional)
{
    expectSuggestions({
        {{"sub-{01|02|03}_task-rest{|_run-1|_run-2}_bold.tsv", "sub-{01|02|03}_task-nap_bold.tsv"},
         {"sub-{sub:digits}_task-{task:word}[_run-{run:digits}]_bold.tsv"}},
        {{"a{1|2|3}_b{1|2}{|_01|_02}.wav"}, {"a{a:digits}_b{b:digits}[_{name:digits}].wav"}},
        {{"{532|633|785}nm {P|Q}{5|10}{| acc10} spot{1|2}.txt"},
         {"{nm:digits}nm {name:word1}{name_2:digits}[ acc{acc:digits}] spot{spot:digits}.txt"}},
        {{"m{1|2|3}/k{1|2}/{s1960-|s1970-|}r{1|2|3}i{1|2}.nc"},
         {"m{m:digits}/k{k:digits}/[s{s:digits}-]r{r:digits}i{i:digits}.nc"}},
        {{"sub-{01|02|03}/ses-{1|2}/anat/sub-1_ses-1_T1w.nii",
          "sub-{04|05|06}/anat/sub-1_ses-1_T1w.nii"},
         {"sub-{sub:digits}/[ses-{ses:digits}/]anat/sub-1_ses-1_T1w.nii"}},
    });
}

TEST(TemplateSuggestion, NamesAValueAgainThatIsRepeated)
{
    expectSuggestions({
        {{"S1/S1R{1|2}.edf", "S2/S2R{1|2}.edf", "S3/S3R{1|2}.edf"},
         {"S{S:digits}/S{S}R{R:digits}.edf"}},
        {{"MPI-ESM/tas_MPI-ESM_{1|2}.nc", "CanESM2/tas_CanESM2_{1|2}.nc",
          "bcc-1-1/tas_bcc-1-1_{1|2}.nc"},
         {"{dir1}/tas_{dir1}_{name:digits}.nc"}},
    });
}

TEST(TemplateSuggestion, LeavesOpenWhichFileOfARunAndWhichEndingItIs)
{
    expectSuggestions({
        {{"run_{1|2|3}/{flow.vtu|forces.dat}"}, {"run_{run:digits}/*"}},
        {{"run_{1|2|3}/{flow.vtu|forces.dat|probe_01.csv}"}, {"run_{run:digits}/*"}},
        {{"run_{1|2|3}/{ckpt_000.pt|ckpt_100.pt|metrics.json}"},
         {"run_{run:digits}/ckpt_{ckpt:digits}.pt", "run_{run:digits}/metrics.json"}},
        {{"run_{1|2|3}.{nc|nc.md5}"}, {"run_{run:digits}.*"}},
        {{"{wing|tail}_lc{001|002}.{op2|f06}"}, {"{name:word}_lc{lc:digits}.*"}},
        {{"x_{1|2}.t{1|2|3}"}, {"x_{x:digits}.t{t:digits}"}},
        {{"t{1|2|3}/{left|right}.csv"}, {"t{t:digits}/{name}.csv"}},
    });
}

TEST(TemplateSuggestion, PutsIntoOneColumnWhatIsDividedDifferently)
{
    expectSuggestions({
        {{"{2m_temperature|rain|10m_wind_of_u}/y{1990|1991|1992}.nc"}, {"{dir1}/y{y:digits}.nc"}},
        {{"{rib_L|rib_R|bracket|spar}/LC{01|02}.csv"}, {"{dir1}/LC{LC:digits}.csv"}},
        {{"{S1 clay|S2 white sand|S3 silt}/{dry|wet}_spot{1|2|3}.txt"},
         {"S{S:digits} {dir1}/{name:word}_spot{spot:digits}.txt"}},
        {{"{1-T1|2-T2_FLAIR|3-DWI}/IM-{01|02}.dcm"}, {"{dir1:digits}-{dir1_2}/IM-{IM:digits}.dcm"}},
    });
}

TEST(TemplateSuggestion, SuggestsATemplateForEachKindOfFileTheLargestFirst)
{
    expectSuggestions({
        {{"README.md", "src/{main|list}.py", "data/raw/S{1|2|3}_{open|closed}.edf",
          "data/features/f_{1|2|3}.npy"},
         {"data/raw/S{S:digits}_{name:word}.edf", "data/features/f_{f:digits}.npy"}},
    });
}

TEST(TemplateSuggestion, UsesANameForANumberInAllTemplatesOrInNone)
{
    const Texts templates = suggest(
        expandAll({"m{0.5|0.6|0.7|0.8}/a.csv", "x/y/z/m{a|b|c}{1|2}x/m_{1|2|3}_q_{A|B}.log"}));
    ASSERT_GE(templates.size(), 2U);
    EXPECT_NO_THROW(TemplateList{templates});
}

TEST(TemplateSuggestion, EscapesWhatHasAMeaning)
{
    expectSuggestions({{{"a[x]*?\\_1.txt", "a[x]*?\\_2.txt", "a[x]*?\\_3.txt"},
                        {"a\\[x\\]\\*\\?\\\\_{name:digits}.txt"}}});
}

TEST(TemplateSuggestion, SuggestsNothingWhereNothingIsRegular)
{
    expectSuggestions({{{"README.md", "LICENSE", "src/main.cpp", "docs/index.html"}, {}}});
    EXPECT_EQ(suggest({}), Texts());
    EXPECT_EQ(suggest({""}), Texts());
}

TEST(TemplateSuggestion, DoesNotDependOnTheOrderOfThePaths)
{
    std::mt19937 engine(7);
    Texts paths = expandAll({"a{1|2|3}/b_{x|y}_{1|2|3|4}.csv", "c/{1|2|3|4|5}_{u|v-w|q r}.txt"});
    for (int i = 0; i < 5000; ++i)
        paths.push_back("many/n" + std::to_string(i) + (i % 3 == 0 ? "_extra" : "") + ".bin");
    const Texts templates = suggest(paths);
    EXPECT_FALSE(templates.empty());
    for (int i = 0; i < 5; ++i) {
        std::shuffle(paths.begin(), paths.end(), engine);
        EXPECT_EQ(suggest(paths), templates);
    }
}

TEST(TemplateSuggestion, ReadsNearlyAllOfALargeTree)
{
    Texts paths;
    for (int i = 0; i < 30000; ++i)
        paths.push_back("wing" + std::string(1, static_cast<char>('A' + i % 7)) + "/run_" +
                        std::to_string(i) + (i % 2 == 0 ? "/flow.vtu" : "/forces.dat"));
    EXPECT_EQ(suggest(paths), Texts{"wing{wing}/run_{run:digits}/*"});
    EXPECT_EQ(countRead(suggest(paths), paths), paths.size());
}

// Whatever the names are, the suggestions are templates that can be given together, and each reads
// something.
TEST(TemplateSuggestion, OfRandomNamesCanBeGivenAndReadsFiles)
{
    const std::vector<std::string> alphabets = {
        "ab1_-", "aA01._-/", "/_-=,.@+ ab12", std::string("\0\n\xff\xc3*?[]{}\\/a1_", 15),
        "a/",    "1.2e-"};
    for (unsigned seed = 0; seed < 600; ++seed) {
        std::mt19937 engine(seed);
        const auto upTo = [&](std::size_t most) {
            return std::uniform_int_distribution<std::size_t>(0, most)(engine);
        };
        // Names made of few pieces are alike, as names are.
        Texts pieces;
        for (std::size_t i = upTo(8) + 2; i > 0; --i) {
            const std::string& alphabet = alphabets[upTo(alphabets.size() - 1)];
            std::string piece;
            for (std::size_t k = upTo(6); k > 0; --k)
                piece += alphabet[upTo(alphabet.size() - 1)];
            pieces.push_back(piece);
        }
        Texts paths;
        for (std::size_t i = upTo(120); i > 0; --i) {
            std::string path;
            for (std::size_t k = upTo(6); k > 0; --k)
                path += pieces[upTo(pieces.size() - 1)];
            paths.push_back(path);
        }
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        const Texts templates = suggest(paths);
        EXPECT_LE(templates.size(), 8U);
        for (const std::string& text : templates)
            EXPECT_GE(countRead({text}, paths), 2U) << seed << ": " << text;
        EXPECT_NO_THROW(TemplateList{templates}) << seed;
    }
}

} // namespace tests
} // namespace casetable
