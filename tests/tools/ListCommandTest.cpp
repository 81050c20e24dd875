#include "tools/ToolSteps.h"

#include <sys/stat.h>

namespace tool::test
{

namespace
{

using ListCommandTest = ToolFixture;

TEST_F(ListCommandTest, ReportsAFifoAndAFolder)
{
    ::mkfifo(pathOf("a.tbscripts").c_str(), 0600);
    ::mkdir(pathOf("b.tbscripts").c_str(), 0700);

    const Outcome fifo = run({"list", "a.tbscripts"});
    const Outcome folder = run({"list", "b.tbscripts"});

    EXPECT_EQ(fifo, trouble("tbscripts: a.tbscripts: is not a regular file\n"));
    EXPECT_EQ(folder, trouble("tbscripts: b.tbscripts: is a folder, not a file\n"));
}

TEST_F(ListCommandTest, ReportsAnEmptyDocument)
{
    write("a.tbscripts", "");

    const Outcome outcome = run({"list", "a.tbscripts"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, ::testing::StartsWith("a.tbscripts:1: "));
}

const Facts<ListCommandTest> FACTS(
    "ListCommandTest",
    {
        {"ShowsAnAlignedTable",
         {file(
              "a.tbscripts",
              R"({"scripts":[
        {"name":"gate/opening","type":"lua","sources":"x = 1"},
        {"name":"caf)"
              "\xc3\xa9"
              R"(","type":"lua","sources":"\n\nx = = 1000"},
        {"name":"","type":"lua"},
        {"name":"other","type":"python","sources":"print 1"}]})"),
          gives(
              {"list", "a.tbscripts"},
              failure(
                  "",
                  "NAME          TYPE     BYTES  COMPILED\n"
                  "gate/opening  lua          5  yes\n"
                  "caf\xc3\xa9          lua         12  no, line 3: unexpected symbol near '='\n"
                  "''            lua          0  yes\n"
                  "other         UNKNOWN      7  no: the type is not \"lua\"\n"))}},
        {"AlignsNamesOfWideAndCombiningCharacters",
         {file("a.json", R"([{"name":"\u6f22\u5b57","type":"lua","sources":""},
        {"name":"caf\u0065\u0301","type":"lua","sources":"x = 1"},
        {"name":"a\u0007","type":"lua","sources":""}])"),
          gives(
              {"list", "a.json"},
              success("NAME   TYPE  BYTES  COMPILED\n"
                      "\xe6\xbc\xa2\xe5\xad\x97   lua       0  yes\n"
                      "cafe\xcc\x81   lua       5  yes\n"
                      "a\\x07  lua       0  yes\n"))}},
        {"ShowsAScriptFile",
         {file("a.lua", "x = 1"),
          gives(
              {"list", "a.lua"},
              success("NAME   TYPE  BYTES  COMPILED\na.lua  lua       5  yes\n"))}},
        {"EscapesNamesInTheTable",
         {file("a.json", R"({"name":"a\u001b[2J\nb","type":"lua","sources":""})"),
          gives(
              {"list", "a.json"},
              success("NAME         TYPE  BYTES  COMPILED\n"
                      "a\\x1b[2J\\nb  lua       0  yes\n"))}},
        {"PrintsJson",
         {file("a.json", R"([{"name":"p","type":"lua","sources":"x"},{"name":"q\u0000"}])"),
          gives({"list", "--json", "a.json"}, failure("", R"([
  {
    "name": "p",
    "type": "lua",
    "bytes": 1,
    "compiled": false,
    "line": 1,
    "message": "'=' expected near '<eof>'"
  },
  {
    "name": "q\u0000",
    "type": "UNKNOWN",
    "bytes": 0,
    "compiled": false,
    "message": "the type is not \"lua\""
  }
]
)"))}},
        {"PrintsJsonThatIsUtf8ThoughMessagesQuoteSources",
         {file("a.lua", "x = '\xff\n"), gives({"list", "--json", "a.lua"}, failure("", R"([
  {
    "name": "a.lua",
    "type": "lua",
    "bytes": 7,
    "compiled": false,
    "line": 1,
    "message": "unfinished string near ''\\xff'"
  }
]
)"))}},
        {"ShowsTheGoodElementsBesideTheBad",
         {file("a.json", R"([7,{"name":"p","type":"lua","sources":""}])"),
          gives(
              {"list", "a.json"},
              trouble(
                  "tbscripts: a.json: element 1: Script Declaration entry not an object.\n",
                  "NAME  TYPE  BYTES  COMPILED\np     lua       0  yes\n"))}},
        {"ShowsOnlyTheHeadingOfAnEmptyList",
         {file("a.tbscripts", R"({"scripts":[]})"),
          gives({"list", "a.tbscripts"}, success("NAME  TYPE  BYTES  COMPILED\n"))}},
        {"ReportsAMissingFile",
         {gives(
             {"list", "missing.tbscripts"},
             trouble("tbscripts: missing.tbscripts: No such file or directory\n"))}},
        {"EndsQuietlyIfItsReaderGoesEarly",
         {file("a.lua", "x = 1"),
          shellGives("\"$TOOL\" list a.lua | head -1", success("NAME   TYPE  BYTES  COMPILED\n"))}},
    });

} // namespace

} // namespace tool::test
