#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

const std::string campaign = "wing{wing}/Mach{Mach:number}/*[_Re{Re:number}].vtu";

class CasetableTemplate : public testing::Test {
protected:
    // With messages on a terminal.
    static Outcome onTerminal(const TemporaryTree& tree, const Arguments& arguments)
    {
        return run(arguments, withErrors(tree, Stream::Terminal));
    }

    // Of two wings, and two files that are no results.
    const TemporaryTree tree_{{"results/wingA/Mach0.80/flow_Re6.5e6.vtu",
                               "results/wingB/Mach0.85/flow.vtu",
                               "results/wingB/Mach0.85/notes.txt", "results/read.me"}};
};

// A table of the files that a template reads in a list of these.
Outcome filesRead(const std::string& text, const std::vector<std::string>& files)
{
    const TemporaryTree tree;
    std::string list;
    for (const std::string& file : files)
        list += file + '\0';
    tree.file("list", list);
    return run(tree, {"-t", text, "--files", "-0", "--from-list", "list"});
}

// Where many letters follow the first, the engine gives up.
const std::string endless = "{a,z(.|..)*[bc]}";

} // namespace

TEST_F(CasetableTemplate, MakesColumnsWhereItsNamesStand)
{
    EXPECT_EQ(run(tree_, {"-t", campaign, "results"}), prints("case,wing,Mach,Re,files\n"
                                                              "0,A,0.80,6.5e6,1\n"
                                                              "1,B,0.85,,1\n"));
}

TEST_F(CasetableTemplate, AlignsNumbersToTheRight)
{
    EXPECT_EQ(run(tree_, {"--template", campaign, "-f", "table", "results"}),
              prints("case  wing  Mach     Re  files\n"
                     "   0  A     0.80  6.5e6      1\n"
                     "   1  B     0.85      -      1\n"));
}

TEST_F(CasetableTemplate, ListsTheFilesThatItReads)
{
    EXPECT_EQ(run(tree_, {"-t", campaign, "--files", "results"}),
              prints("path,case,wing,Mach,Re\n"
                     "wingA/Mach0.80/flow_Re6.5e6.vtu,0,A,0.80,6.5e6\n"
                     "wingB/Mach0.85/flow.vtu,1,B,0.85,\n"));
}

TEST_F(CasetableTemplate, ListsTheFilesThatItDoesNotFitWithTheElementThatFailed)
{
    EXPECT_EQ(run(tree_, {"-t", "wing{w}/*/{f}.vtu", "-t", "{x}.md", "--unmatched", "results"}),
              prints("path,template,reason\n"
                     "read.me,{x}.md,'.md' does not fit behind 'read.me'\n"
                     "wingB/Mach0.85/notes.txt,wing{w}/*/{f}.vtu,"
                     "'.vtu' does not fit behind 'wingB/Mach0.85/notes.txt'\n"));
}

TEST_F(CasetableTemplate, ExplainsAPathThatItReads)
{
    EXPECT_EQ(run(tree_, {"-t", "x{a}", "-t", campaign, "--explain", "wingB/Mach1/a.vtu"}),
              prints("wingB/Mach1/a.vtu\n"
                     "    ~  {wing}: 'B'\n"
                     "          ~  {Mach:number}: '1'\n"
                     "{Re:number}: its part is left out\n"
                     "matched by " +
                     campaign + "\n"));
}

TEST_F(CasetableTemplate, ExplainsWhyItDoesNotFitAPath)
{
    EXPECT_EQ(run(tree_, {"-t", "x{a}", "-t", campaign, "--explain", "wingB/Mach/a.vtu"}),
              ends(1, "wingB/Mach/a.vtu\n"
                      "    ~  {wing}: 'B'\n"
                      "not matched: '{Mach:number}' does not fit behind 'wingB/Mach'\n"
                      "  wing{wing}/Mach{Mach:number}/*[_Re{Re:number}].vtu\n"
                      "                 ^^^^^^^^^^^^^\n"));
}

TEST_F(CasetableTemplate, LeavesAuxiliaryFilesToTheirTags)
{
    EXPECT_EQ(run(tree_, {"-t", "wing{w}/**", "-a", "*.txt=notes", "-a", "*?=rest", "results"}),
              prints("case,w,notes,notes files,rest,rest files,files\n"
                     "0,A,,0,wingA/Mach0.80/flow_Re6.5e6.vtu,1,1\n"
                     "1,B,wingB/Mach0.85/notes.txt,1,wingB/Mach0.85/flow.vtu,1,2\n"));
}

TEST_F(CasetableTemplate, ComesInEveryFormat)
{
    EXPECT_EQ(run(tree_, {"-t", campaign, "-f", "tsv", "results"}),
              prints("case\twing\tMach\tRe\tfiles\n"
                     "0\tA\t0.80\t6.5e6\t1\n"
                     "1\tB\t0.85\t\t1\n"));
    const std::string json = run(tree_, {"-t", campaign, "-f", "json", "results"}).output;
    EXPECT_NE(json.find("6.5e6"), std::string::npos) << json;
    const std::string vtt = run(tree_, {"-t", campaign, "-f", "vtt", "results"}).output;
    EXPECT_NE(vtt.find("\"Mach\""), std::string::npos) << vtt;
}

TEST_F(CasetableTemplate, ReadsEachPathByTheFirstOfSeveralThatFits)
{
    EXPECT_EQ(run(tree_, {"-t", "wing{wing}/*/flow_*", "-t", "{file}.me", "-t", "{wing:path}.vtu",
                          "--files", "results"}),
              prints("path,case,wing,file\n"
                     "read.me,0,,read\n"
                     "wingA/Mach0.80/flow_Re6.5e6.vtu,1,A,\n"
                     "wingB/Mach0.85/flow.vtu,2,wingB/Mach0.85/flow,\n"));
}

TEST_F(CasetableTemplate, IsNotReplacedByTheOutputIfItComesFromAFile)
{
    tree_.file("templates", campaign + std::string("\n"));

    EXPECT_EQ(run(tree_, {"-t", "@templates", "-o", "./templates", "results"}),
              fails(4, "./templates: is a file of templates, and is not replaced"));
    EXPECT_EQ(tree_.content("templates"), campaign + std::string("\n"));
}

TEST_F(CasetableTemplate, MayComeFromAFileWithOneALine)
{
    tree_.file("templates", "# Flow fields.\n\n" + campaign + "\n#{x}\nread.{ending}");

    EXPECT_EQ(run(tree_, {"-t", "@templates", "results"}), prints("case,wing,Mach,Re,ending,files\n"
                                                                  "0,,,,me,1\n"
                                                                  "1,A,0.80,6.5e6,,1\n"
                                                                  "2,B,0.85,,,1\n"));
}

TEST_F(CasetableTemplate, BeginsWithAnAtSignWhereTwoAreGiven)
{
    tree_.file("at/@1");

    EXPECT_EQ(run(tree_, {"-t", "@@{n:number}", "at"}), prints("case,n,files\n0,1,1\n"));
}

TEST_F(CasetableTemplate, ThatIsInNoReadableFileIsWrongUsage)
{
    tree_.file("comments", "# None.\n\n");

    EXPECT_EQ(run(tree_, {"-t", "@missing", "results"}),
              fails(2, "--template '@missing': No such file or directory"));
    EXPECT_EQ(run(tree_, {"-t", "@results", "results"}),
              fails(2, "--template '@results': Is a directory"));
    EXPECT_EQ(run(tree_, {"-t", "@a\nb", "results"}),
              fails(2, "--template '@a\\nb': No such file or directory"));
    EXPECT_EQ(run(tree_, {"-t", "@comments", "results"}),
              fails(2, "--template '@comments': there is no template in it"));
}

TEST_F(CasetableTemplate, ThatIsWrongIsShownWithACaretUnderThePlace)
{
    struct Row {
        std::string text;
        std::string errors;
    };
    for (const Row& row :
         {Row{"wing{a}]/x", "--template: this ] closes nothing\n"
                            "  wing{a}]/x\n"
                            "         ^\n"},
          Row{"{a,x(+}", "--template: quantifier does not follow a repeatable item\n"
                         "  {a,x(+}\n"
                         "       ^\n"},
          Row{"{a}\\", "--template: a backslash stands only before one of \\ * ? [ ] { }\n"
                       "  {a}\\\n"
                       "     ^\n"},
          Row{"", "--template: the template has no columns\n"
                  "  \n"
                  "  ^\n"},
          // Escapes are wider than what they stand for.
          Row{"\xff\n\xc3\xa4{case}", "--template: the table has a column of that name itself\n"
                                      "  \\xff\\n\xc3\xa4{case}\n"
                                      "          ^\n"}}) {
        Outcome expected;
        expected.exitCode = 2;
        expected.errors = "casetable: " + row.errors;
        EXPECT_EQ(run(tree_, {"-t", row.text, "results"}), expected);
    }
}

TEST_F(CasetableTemplate, MakesAColumnANumberInAllTemplatesOrInNone)
{
    const Outcome outcome = run(tree_, {"-t", "{a:number}", "-t", "x[{a}]", "results"});

    EXPECT_EQ(outcome.exitCode, 2) << outcome;
    EXPECT_EQ(outcome.errors,
              "casetable: --template: another template has this column as a number\n"
              "  x[{a}]\n"
              "     ^\n");
}

TEST_F(CasetableTemplate, DoesNotGoWithMarkersOrSuggestions)
{
    EXPECT_EQ(run(tree_, {"-t", campaign, "-s", "wing", "results"}),
              fails(2, "--string and --template exclude each other"));
    EXPECT_EQ(run(tree_, {"-n", "Mach", "-t", campaign, "results"}),
              fails(2, "--number and --template exclude each other"));
    EXPECT_EQ(run(tree_, {"--suggest", "-t", campaign, "results"}),
              fails(2, "--suggest and --template exclude each other"));
}

TEST_F(CasetableTemplate, ThatFitsNoFileIsExplained)
{
    EXPECT_EQ(run(tree_, {"-t", "wing{w}/T{T:number}", "results"}),
              ends(1, "case,w,T,files\n",
                   "no file matched: the template does not fit 4 files, as "
                   "wingA/Mach0.80/flow_Re6.5e6.vtu: 'T' does not fit behind 'wingA/'; "
                   "--unmatched lists them"));
    EXPECT_EQ(run(tree_, {"-t", "x{a}", "-t", "y{a}", "--unmatched", "-f", "json", "-q", "results"})
                  .errors,
              "casetable: no file matched: no template fits 4 files, as read.me: 'x' does not fit "
              "the beginning of the path\n");
}

TEST_F(CasetableTemplate, EndsTheRunWhereTheEngineGivesUp)
{
    const std::string path = "z1" + std::string(100, 'a');
    const TemporaryTree tree(
        {"results/b", "results/" + path, "results/z2" + std::string(100, 'a'), "results/zb"});
    tree.file("out", "earlier");

    EXPECT_EQ(run(tree, {"-t", endless, "results"}), fails(3, path + ": match limit exceeded"));
    EXPECT_EQ(run(tree, {"-t", endless, "-o", "out", "results"}).exitCode, 3);
    EXPECT_EQ(tree.content("out"), "earlier");
    EXPECT_EQ(run(tree, {"-t", endless, "--explain", path}),
              fails(3, path + ": match limit exceeded"));
}

TEST_F(CasetableTemplate, EndsWellWhereTheEngineGivesUpOnlyOnTheReason)
{
    // The ending alone tells that it does not fit.
    const TemporaryTree tree({"results/z" + std::string(100, 'a'), "results/zb.x"});

    for (const Stream errors : {Stream::Pipe, Stream::Terminal}) {
        const Outcome outcome = run({"-t", endless + ".x", "results"}, withErrors(tree, errors));
        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_EQ(outcome.output, "case,a,files\n0,zb,1\n");
    }
    EXPECT_EQ(run(tree, {"-t", endless + ".y", "results"}),
              ends(1, "case,a,files\n",
                   "no file matched: the template does not fit 2 files, as zb.x: '.y' does not fit "
                   "behind 'zb'; --unmatched lists them"));
}

TEST_F(CasetableTemplate, GetsRemarksOnATerminal)
{
    EXPECT_EQ(
        onTerminal(tree_, {"-t", campaign, "-t", "{a}.md", "-f", "csv", "-o", "out", "results"}),
        prints("", "cases: 2, from 2 of 4 files; --unmatched lists the others\n"
                   "casetable: the template {a}.md reads no file\n"
                   "casetable: no template fits 2 files, as wingB/Mach0.85/notes.txt: "
                   "'.vtu' does not fit behind 'wingB/Mach0.85/notes.txt'"));
    EXPECT_EQ(run(tree_, {"-t", campaign, "-o", "out", "results"}), prints(""));
}

TEST_F(CasetableTemplate, GetsRemarksOnPartsThatAreProbablyNotMeant)
{
    const TemporaryTree tree({"results/run1.x", "results/run2_Tx.x"});

    EXPECT_EQ(
        onTerminal(tree, {"-t", "run[0-9]{a}[_T{T:number}][_P{P}].x", "-o", "out", "results"}),
        prints("", "cases: 2, from 2 of 2 files\n"
                   "casetable: no file takes the optional part [0-9]; a set of bytes is "
                   "written {name,[0-9]}\n"
                   "casetable: no file takes the optional part [_T{T:number}]\n"
                   "casetable: the optional part [_T{T:number}] is left out in 1 file in "
                   "which {a} beside it holds its beginning, as in run2_Tx.x\n"
                   "casetable: no file takes the optional part [_P{P}]"));
    EXPECT_EQ(onTerminal(tree, {"-q", "-t", "run[0-9]{a}", "-o", "out", "results"}), prints(""));
}

TEST(CasetableTemplates, ReadPathsAsTheirLanguageSays)
{
    struct Row {
        std::string text;
        std::vector<std::string> files;
        std::string rows; // Behind the header's "path,case,".
    };
    for (const Row& row : {
             // Text stands for itself, and a backslash takes a meaning.
             Row{"a\\*\\?\\[\\]\\{\\}\\\\{x}", {"a*?[]{}\\1", "ab[]{}\\1"}, "x\na*?[]{}\\1,0,1\n"},
             // A column of text takes as little as fits.
             Row{"{x}_{y}", {"1_2_3"}, "x,y\n1_2_3,0,1,2_3\n"},
             Row{"*{x}", {"abc"}, "x\nabc,0,abc\n"},
             Row{"{x}*", {"abc"}, "x\nabc,0,a\n"},
             Row{"{x:text}/y", {"a/b/y", "c/y"}, "x\nc/y,0,c\n"},
             // Others take as much.
             Row{"{x:word}*", {"aZ9_b"}, "x\naZ9_b,0,aZ9\n"},
             Row{"{x:digits}*", {"0077", "x1"}, "x\n0077,0,0077\n"},
             Row{"BE{n:number}*",
                 {"BE-12", "BE5.", "BE.5e3e", "BEx"},
                 "n\nBE-12,0,-12\nBE.5e3e,1,.5e3\nBE5.,2,5\n"},
             // Fixed widths.
             Row{"{y:digits4}{m:digits2}{r:text2}{w:word1}",
                 {"202406-_a", "20240x-_a"},
                 "y,m,r,w\n202406-_a,0,2024,06,-_,a\n"},
             // Whole paths and expressions.
             Row{"{p:path}/{f}", {"a/b/c"}, "p,f\na/b/c,0,a/b,c\n"},
             Row{"{x,a|ab}{y}", {"abc"}, "x,y\nabc,0,a,bc\n"},
             Row{"{x,[0-9]{2}}{y,.*}", {"12/3", "34"}, "x,y\n12/3,0,12,/3\n34,1,34,\n"},
             Row{"{n:number,1|2}", {"1", "3"}, "n\n1,0,1\n"},
             // The same bytes again.
             Row{"{x}/{x}_{y}", {"1/1_2", "1/2_2"}, "x,y\n1/1_2,0,1,2\n"},
             // Wildcards.
             Row{"*/?{x}", {"a/bc", "bc", "a2/b", "a3/b/c"}, "x\na/bc,0,c\n"},
             Row{"**/{x}", {"1", "a/2", "a/b/3"}, "x\n1,0,1\na/2,1,2\na/b/3,2,3\n"},
             Row{"a**{x:digits}", {"a1", "ab/c2"}, "x\na1,0,1\nab/c2,1,2\n"},
             // Parts, taken where they can be and looked for behind wildcards.
             Row{"{x:digits}[_{y:digits}][_z]",
                 {"1", "1_2", "1_z", "1_2_z"},
                 "x,y\n1,0,1,\n1_2,1,1,2\n1_2_z,1,1,2\n1_z,0,1,\n"},
             Row{"*[_run-{r:digits}]*_{s:word}.*",
                 {"a_b_run-7_c_x.y", "a_x.y"},
                 "r,s\na_b_run-7_c_x.y,0,7,x\na_x.y,1,,x\n"},
             Row{"**[A{a}/][B{b}/]{c}",
                 {"x/A1/B2/3", "x/B2/3", "x/3"},
                 "a,b,c\nx/3,0,,,3\nx/A1/B2/3,1,1,2,3\nx/B2/3,2,,2,3\n"},
         }) {
        const Outcome outcome = filesRead(row.text, row.files);
        EXPECT_EQ(outcome.output, "path,case," + row.rows) << outcome;
    }
}

TEST(CasetableTemplates, ReadNamesOfAnyBytes)
{
    EXPECT_EQ(filesRead("\xff{a}\n\"{b,[\\x80-\\xff]}", {"\xffx\n\"\xfe", "-\xff"}),
              prints("path,case,a,b\n\"\xffx\n\"\"\xfe\",0,x,\xfe\n"));

    const TemporaryTree tree({"results/-n \xe2\x82\xac\x1b"});
    EXPECT_EQ(run(tree, {"-t", "-n {a}", "-f", "table", "results"}),
              prints("case  a      files\n   0  \xe2\x82\xac\\x1b      1\n"));
}

TEST(CasetableTemplates, ReadTheSameFromATreeAsFromAList)
{
    const TemporaryTree tree({"results/a1/b2", "results/a1/.b3", "results/a1/b4"});

    EXPECT_EQ(run(tree, {"-t", "a{a}/*b{b:digits}", "-E", "b4", "results"}),
              prints("case,a,b,files\n0,1,2,1\n"));
    EXPECT_EQ(run(tree, {"-t", "a{a}/*b{b:digits}", "-H", "results"}),
              prints("case,a,b,files\n0,1,3,1\n1,1,2,1\n2,1,4,1\n"));
}

} // namespace tests
} // namespace casetable
