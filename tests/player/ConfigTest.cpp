// Config: the key=value file format, line cutting and the typed lookups.

#include "player/Config.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TempFile.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

Config ConfigFromBytes(const std::string& bytes) {
  pelorin_test::TempFile file(bytes);
  return Config::FromFile(file.Path());
}

TEST(ConfigFile, MissingFileOrDirectoryGivesDefaultsAndOneWarning) {
  pelorin_test::TraceCapture trace;
  const Config config = Config::FromFile("/nonexistent/quillan/Pelorin.cfg");
  EXPECT_TRUE(config.IsEmpty());
  ASSERT_EQ(trace.Lines().size(), 1u);
  EXPECT_EQ(trace.Lines()[0].level, 3);
  EXPECT_EQ(trace.Lines()[0].text,
            "Config::FromFile: failed to open /nonexistent/quillan/Pelorin.cfg, error=1");

  trace.Clear();
  EXPECT_TRUE(Config::FromFile("").IsEmpty());
  EXPECT_EQ(trace.Texts(), std::vector<std::string>{"Config::FromFile: failed to open , error=4"});
  EXPECT_TRUE(Config::FromFile("/tmp").IsEmpty());  // a directory
}

TEST(ConfigFile, LineSyntax) {
  const Config config = ConfigFromBytes(
      "# eventsFile=/commented\n"
      "   // tpegsDir=/commented\n"
      "eventsFile = /data/rec/a b.txt  # not a comment\n"
      "PlaybackSpeed=1\n"
      "playbackspeed=2.5\n"
      "flagOnly\n"
      "=orphan\n"
      "\n"
      "\t  \n"
      "expr = a=b = c \n"
      "last=no line feed");
  EXPECT_EQ(config.GetString("eventsFile", ""), "/data/rec/a b.txt  # not a comment");
  EXPECT_EQ(config.GetString("tpegsDir", "none"), "none");
  EXPECT_EQ(config.GetString("#eventsfile", "none"), "none");
  EXPECT_EQ(config.GetDouble("PLAYBACKSPEED", 0.0), 2.5);  // the later line wins
  EXPECT_EQ(config.GetString("flagonly", "x"), "");
  EXPECT_TRUE(config.GetBool("flagOnly", true));  // empty counts as absent
  EXPECT_EQ(config.GetDouble("flagOnly", 4.0), 4.0);
  EXPECT_EQ(config.GetString("", "x"), "x");
  EXPECT_EQ(config.GetString("expr", ""), "a=b = c");
  EXPECT_EQ(config.GetString("last", ""), "no line feed");
}

TEST(ConfigFile, LineEndsAndCutting) {
  const Config crlf = ConfigFromBytes("a=1\r\nb = two words \r\n");
  EXPECT_EQ(crlf.GetString("a", ""), "1");
  EXPECT_EQ(crlf.GetString("b", ""), "two words");

  // Lone CRs do not end lines: the file is cut every 1023 bytes and the
  // first key of each piece takes the rest of it as its value.
  const std::string piece = "a=" + std::string(1017, 'v') + "\rb=2";  // 1023 bytes
  const Config crOnly = ConfigFromBytes(piece + "c=3\rd=4\r");
  EXPECT_EQ(crOnly.GetString("a", "").size(), 1021u);
  EXPECT_EQ(crOnly.GetString("b", "none"), "none");
  EXPECT_EQ(crOnly.GetString("c", ""), "3\rd=4");

  // 1500 bytes before the line feed: the first 1023 bytes, then the other 477.
  const std::string first = "k=" + std::string(1021, 'v');
  const std::string rest = "r=" + std::string(475, 'w');
  const Config cut = ConfigFromBytes(first + rest + "\nz=1\n");
  EXPECT_EQ(cut.GetString("k", "").size(), 1021u);
  EXPECT_EQ(cut.GetString("r", "").size(), 475u);
  EXPECT_EQ(cut.GetString("z", ""), "1");
}

// Booleans by word or integer, anything else the default; doubles with either
// decimal mark (the number grammar itself is NumberText's).
TEST(ConfigLookup, BooleansAndDoubles) {
  const Config config = ConfigFromBytes(
      "t1=TRUE\nt2=On\nt3=-7\nt4=+1\n"
      "f1=False\nf2=OFF\nf3=0\nf4=-0\n"
      "d1=yes\nd2=1.0\nd3=1x\nd4=99999999999999999999\n"
      "point=1.5\ncomma=1,5\nword=fast\nboth=1.000,5\n");
  for (const char* key : {"t1", "t2", "t3", "t4"}) EXPECT_TRUE(config.GetBool(key, false)) << key;
  for (const char* key : {"f1", "f2", "f3", "f4"}) EXPECT_FALSE(config.GetBool(key, true)) << key;
  for (const char* key : {"d1", "d2", "d3", "d4"}) {
    EXPECT_TRUE(config.GetBool(key, true)) << key;
    EXPECT_FALSE(config.GetBool(key, false)) << key;
  }
  EXPECT_EQ(config.GetDouble("point", 0.0), 1.5);
  EXPECT_EQ(config.GetDouble("comma", 0.0), 1.5);
  EXPECT_EQ(config.GetDouble("word", 7.25), 7.25);
  EXPECT_EQ(config.GetDouble("both", 7.25), 7.25);
}

}  // namespace
}  // namespace Quillan
