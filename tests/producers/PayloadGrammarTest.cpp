// The key=value payload grammar shared by the "$TMC" and "$TSL" producers,
// run on a producer whose keys are "a" and "b", and the UTF-8 conversion
// that the producers apply to texts.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "producers/PayloadProducer.h"
#include "producers/Utf8Text.h"

namespace Quillan {
namespace {

using Fields = std::vector<std::pair<int, std::string>>;

class NullMessage : public ProducedMessage {
 public:
  void DeliverTo(TrafficDataListener&) override {}
};

// Records what Parse asks of it; refuses the value "reject".
class RecordingProducer : public PayloadProducer {
 public:
  void Begin() override {
    fields.clear();
    nextItems = 0;
  }
  void InitKeys(KeyTable& keys) override {
    ++initKeysCalls;
    keys["a"] = 1;
    keys["b"] = 2;
  }
  int SetField(int field, const std::string& value) override {
    if (value == "reject") return 7;
    fields.emplace_back(field, value);
    return 0;
  }
  void NextItem() override { ++nextItems; }
  std::unique_ptr<ProducedMessage> CreateMessage() override {
    return std::make_unique<NullMessage>();
  }

  Fields fields;
  int nextItems = 0;
  int initKeysCalls = 0;
};

struct GrammarCase {
  std::string payload;
  bool produces;
  Fields fields;  // stored before the end or the failure
  int nextItems;
};

TEST(PayloadGrammar, EveryPayloadOfTheGrammarTable) {
  const std::vector<GrammarCase> cases = {
      {"a=1 b=2", true, {{1, "1"}, {2, "2"}}, 1},
      {"a=1;b=2", true, {{1, "1"}, {2, "2"}}, 2},
      {"a=1;", true, {{1, "1"}}, 1},
      {"a=1 ", true, {{1, "1"}}, 1},
      {"a=", false, {}, 1},
      {"a= b=2", true, {{1, ""}, {2, "2"}}, 1},
      {"a=1  b=2", false, {{1, "1"}}, 1},
      {"a1", false, {}, 1},
      {"=1", false, {}, 1},
      {"a=\"x y;z\" b=2", true, {{1, "x y;z"}, {2, "2"}}, 1},
      {"a=\"x y", true, {{1, "x y"}}, 1},
      {"a=\"\"", false, {}, 1},
      {"a=\"\" b=2", true, {{1, ""}, {2, "2"}}, 1},
      {"a=\"x\"yb=2", true, {{1, "x"}, {2, "2"}}, 1},
      {"a=\"x\";b=2", true, {{1, "x"}, {2, "2"}}, 2},
      {"A=1", false, {}, 1},
      {"", true, {}, 0},
      {"a=\"", false, {}, 1},
      {";", false, {}, 1},
      {" ; ;", false, {}, 1},
      {"a=1;;b=2", false, {{1, "1"}}, 2},
      {"b=2 a=reject b=3", false, {{2, "2"}}, 1},
      {"a=x=y", true, {{1, "x=y"}}, 1},
      // Separators before, on and after an eight-byte boundary; bytes above 0x7F.
      {"a=0123456789ABCDEF;b=0123456 a=01234567", true,
       {{1, "0123456789ABCDEF"}, {2, "0123456"}, {1, "01234567"}}, 2},
      {"a=\xE2\x82\xAC\xFF\x80\x80\xA0\xBB b=1", true,
       {{1, "\xE2\x82\xAC\xFF\x80\x80\xA0\xBB"}, {2, "1"}}, 1},
      {"\"a\"=1", false, {}, 1},
  };
  RecordingProducer producer;
  for (const GrammarCase& c : cases) {
    SCOPED_TRACE("payload: " + c.payload);
    EXPECT_EQ(producer.Parse(c.payload) != nullptr, c.produces);
    EXPECT_EQ(producer.fields, c.fields);
    EXPECT_EQ(producer.nextItems, c.nextItems);
  }
  EXPECT_EQ(producer.initKeysCalls, 1);
}

TEST(PayloadGrammar, ExplainsWhereAndWhyAPayloadFails) {
  struct Expected {
    std::string payload;
    ParseFailure kind;
    size_t offset;
    std::string key;
  };
  const std::vector<Expected> cases = {
      {"a=1  b=2", ParseFailure::kUnknownKey, 4, " b"},
      {"a1", ParseFailure::kMissingEquals, 0, ""},
      {"a=1 b", ParseFailure::kMissingEquals, 4, ""},
      {"a=1 =2", ParseFailure::kEmptyKey, 4, ""},
      {"b=1 a=\"", ParseFailure::kQuoteAtEnd, 6, "a"},
      {"a=1 b=", ParseFailure::kEmptyValueAtEnd, 6, "b"},
      {"a=\"\"", ParseFailure::kEmptyValueAtEnd, 3, "a"},
      {"a=1;b=reject", ParseFailure::kFieldRejected, 4, "b"},
  };
  RecordingProducer producer;
  for (const Expected& c : cases) {
    SCOPED_TRACE("payload: " + c.payload);
    ParseError error;
    EXPECT_EQ(producer.Parse(c.payload, &error), nullptr);
    EXPECT_EQ(error.kind, c.kind);
    EXPECT_EQ(error.offset, c.offset);
    EXPECT_EQ(error.key, c.key);
  }
  ParseError error;
  error.kind = ParseFailure::kUnknownKey;
  EXPECT_NE(producer.Parse("a=1", &error), nullptr);
  EXPECT_EQ(error.kind, ParseFailure::kNone);
}

TEST(Utf8Text, KeepsUtf8AndReadsOtherHighBytesAsLatin1) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Radio 1", "Radio 1"},
      {"\xC4", "\xC3\x84"},      // Latin-1 A umlaut
      {"\xC3\x84", "\xC3\x84"},  // already UTF-8
      {"\xE2\x82\xAC\xF0\x9F\x9A\x97", "\xE2\x82\xAC\xF0\x9F\x9A\x97"},
      // The last lead byte of each length: U+07FF, a fullwidth F, U+10FFFF.
      {"\xDF\xBF\xEF\xBC\xA6\xF4\x8F\xBF\xBF", "\xDF\xBF\xEF\xBC\xA6\xF4\x8F\xBF\xBF"},
      {"\xC0\x80", "\xC3\x80\xC2\x80"},              // overlong NUL
      {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"},  // surrogate
      {"\xE2\x82", "\xC3\xA2\xC2\x82"},              // cut short
      {"\xF5\x80\x80\x80", "\xC3\xB5\xC2\x80\xC2\x80\xC2\x80"},
      {"\xF0\x8F\xBF\xBF", "\xC3\xB0\xC2\x8F\xC2\xBF\xC2\xBF"},  // overlong U+FFFF
      {"\xF4\x90\x80\x80", "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80"},  // above U+10FFFF
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("bytes: " + c.first);
    EXPECT_EQ(Utf8Text::FromBytes(c.first), c.second);
  }
}

}  // namespace
}  // namespace Quillan
