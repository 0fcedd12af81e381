// Numbers are compared as they are written.
#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

bool Fits(const std::string& keyword, const std::string& limit, const std::string& value) {
  return FindingsOf("{\"" + keyword + "\": " + limit + "}", value, {1}).empty();
}

TEST(Numbers, LimitsPastTheExactRangeOfDoublesAreExact) {
  // 2^53 and its neighbours, the largest 64-bit integers, and a double beyond them.
  const std::vector<std::string> rising = Split(
      "-9223372036854775808,-9007199254740993,-9007199254740992,-0.5,0,9007199254740992,"
      "9007199254740993,9223372036854775807,9223372036854775808,18446744073709551615,"
      "18446744073709551616,1e300");
  for (std::size_t i = 0; i < rising.size(); ++i) {
    for (std::size_t j = 0; j < rising.size(); ++j) {
      SCOPED_TRACE(rising[j] + " against " + rising[i]);
      EXPECT_EQ(Fits("minimum", rising[i], rising[j]), j >= i);
      EXPECT_EQ(Fits("exclusiveMaximum", rising[i], rising[j]), j < i);
      EXPECT_EQ(Fits("const", rising[i], rising[j]), j == i);
      EXPECT_EQ(Fits("uniqueItems", "true", "[" + rising[i] + "," + rising[j] + "]"), i != j);
    }
  }
  EXPECT_TRUE(Fits("const", "9007199254740992", "9007199254740992.0"));
  EXPECT_FALSE(Fits("const", "9007199254740993", "9007199254740992.0"));
}

TEST(Numbers, MultiplesAreThoseOfDecimalNumbers) {
  const struct {
    const char* divisor;
    const char* multiples;
    const char* others;
  } cases[] = {
      {"0.1", "0.3,1,-0.7,0,1e22", "0.35,1e-9"},
      {"0.01", "19.99,4.35,1.1", "0.001,4.355"},
      {"7", "9223372036854775807,-7,14.0", "18446744073709551616,7.5"},
      {"2.5", "5,1e308", "4"},
      {"0.123456789", "0.246913578", "1e308"},
      {"1e300", "3e300", "1,1e299"},
  };
  for (const auto& one : cases) {
    for (const std::string& value : Split(one.multiples)) {
      EXPECT_TRUE(Fits("multipleOf", one.divisor, value)) << value << " of " << one.divisor;
    }
    for (const std::string& value : Split(one.others)) {
      EXPECT_FALSE(Fits("multipleOf", one.divisor, value)) << value << " of " << one.divisor;
    }
  }
}

}  // namespace
}  // namespace ValidatorTest
