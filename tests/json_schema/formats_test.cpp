#include "json_schema/formats.h"

#include "json_schema/findings_text.h"

namespace ValidatorTest {
namespace {

// Beside what the public suite has of them.
TEST(Formats, TellGoodTextsFromBad) {
  const struct {
    const char* format;
    const char* good;
    std::string bad;
  } cases[] = {
      {"date", "2024-02-29,2000-02-29", ",2023-02-29,1900-02-29,2024-13-01,2024-1-01,2024-04-31"},
      {"time", "23:20:50Z,00:00:00.123+05:30,23:59:60Z,01:29:60+01:30",
       "24:00:00Z,12:00:00,12:00Z,12:00:00.Z,22:59:60Z,12:00:00+24:00"},
      {"date-time", "2024-02-29T23:20:50Z", "2024-02-29 23:20:50Z,2024-02-29,2023-02-29T00:00:00Z"},
      {"email", R"("joe \" b"@example.com,a@[10.0.0.1],a+b@localhost)",
       "joe,@example.com,joe@,.a@b.c,a..b@c.d,a b@c.d,a@-b.c"},
      {"hostname", "a,node-17.example.com,3com.com", ",-a,a-.b,a..b,a_b,a.,xn--\xC3\xBC"},
      {"ipv4", "0.0.0.0,255.255.255.255", "256.0.0.1,1.2.3,01.2.3.4,1.2.3.4 ,1.2.3."},
      {"ipv6", "::,fe80::1,::ffff:10.0.0.1", "fe80::1%eth0,1:2,:::"},
      {"ipv4", "1.2.3.4", std::string("1.2.3.4\0", 8)},
      {"ipv6", "::1", std::string("::1\0", 4)},
      {"uri", "http://a:b@host:80/p?q#f,urn:x:y,http://[::1]/",
       "http://a b,a%zz:b,http://[::1,http://h:x/,1a:b"},
      {"uri-reference", ",//host/p,a/b:c,?q", "a:b c,1:2,%1"},
      {"regex", "(?=x)\\d{2}", "(,[a,a**"},
      {"mac-address", "02:00:5e:10:00:0F,02-00-5E-10-00-0f",
       "02:00:5e:10:00,02:00-5e:10:00:01,0g:00:5e:10:00:01"},
      {"ipv4-prefix", "10.0.0.0/8,0.0.0.0/0,1.2.3.4/32",
       "10.0.0.0,10.0.0.0/33,10.0.0.0/,10.0.0.0/08,10.0.0/8"},
      {"ipv6-prefix", "fd00::/8,::/0,::1/128", "fd00::,fd00::/129,10.0.0.0/8"},
      {"port", "1,65535", ",0,65536,080,-1,99999999999"},
  };
  for (const auto& one : cases) {
    const JsonValidator::Format* format = JsonValidator::FindFormat(one.format);
    ASSERT_NE(format, nullptr) << one.format;
    for (const std::string& text : Split(one.good)) {
      EXPECT_TRUE(format->holds(text)) << one.format << " " << text;
    }
    for (const std::string& text : Split(one.bad)) {
      EXPECT_FALSE(format->holds(text)) << one.format << " " << text;
    }
  }
}

TEST(Formats, ApplyOnlyToTheKindsOfValuesTheyMean) {
  Expect({{R"({"format": "ipv4"})", "3", ""},
          {R"({"format": "ipv4"})", "{}", ""},
          {R"({"format": "flavour"})", R"("any")", ""},
          {R"({"format": "port"})", "8080", ""},
          {R"({"format": "port"})", "65536",
           "/: expected a port number from 1 to 65535, found 65536"}});
}

}  // namespace
}  // namespace ValidatorTest
