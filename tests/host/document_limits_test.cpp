// Documents that ask for too much, and documents that refer to something outside.
#include "host/xml/limits.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <arpa/inet.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/model/message_codes.h"
#include "host/xml/document.h"
#include "tests/host/encoded_text.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;

std::string Repeat(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

// Code, sentence and place; empty where the document is read.
std::string Refusal(const std::string& text, const Limits& limits = {}) {
  try {
    PmmlDocument::FromText(text, "test.pmml", limits);
    return {};
  } catch (const SSException& error) {
    return std::to_string(error.GetErrorCode()) + ' ' + error.what();
  }
}

TEST(Limits, LetThroughWhatTheySayAndNoMore) {
  const auto table = [](std::size_t rows) {
    return "<InlineTable>" + Repeat("<row/>\n", rows) + "</InlineTable>";
  };
  const struct {
    Limit limit;
    std::string fits;
    std::string exceeds;
    std::string place;
  } cases[] = {
      {&Limits::element_depth, "<a><b><c/><c/><c/></b></a>", "<a><b><c>\n<d/></c></b></a>",
       "element d, line 2"},
      {&Limits::attribute_length, "<a b='123' c='123'/>", "<p:a xmlns:p='u' b='1234'/>",
       "element a, line 1"},
      {&Limits::attributes, "<a b='1=2' c ='' d= \"\"><b e=''/>f=''</a>",
       "<a b='' c='' d='' e=''/>", "line 1"},
      {&Limits::attributes,
       "<a><!-- <b c='' d=''> e='' f='' -->\n<![CDATA[<b c='' d=''e='']]]></a>",
       "<?a <b c='' d=''?>\n<a b='!--' c='\">' d='' e=''/>", "line 2"},
      {&Limits::attributes, "<!DOCTYPE a [<!ENTITY x '<b b=\"\"/>'>]><a>&x;</a>",
       "<!DOCTYPE a [<!ENTITY x '&#60;b b&#61;&#34;&#34; c=\"\" d=\"\" e=\"\"/>'>]><a>&x;</a>",
       "line 1"},
      {&Limits::attributes, "<!DOCTYPE a [<!ENTITY x '<!ELEMENT ><b c='>]><a/>",
       "<!DOCTYPE a SYSTEM 'b\"' [<!ENTITY x '<!ELEMENT '><!ENTITY y \"<b c='\">]>\n"
       "<a b=\"\" c=\"\" d=\"\" e=\"\"/>",
       "line 2"},
      {&Limits::attributes, InEncoding("IBM037", "<a b='x' c ='' d= \"\"><!-- ' --> e='' f=''</a>"),
       InEncoding("IBM037", "<a>'\n<!-- ' --><b c='' d =\"=''\" e='' f= ''/></a>"), "line 2"},
      {&Limits::element_names, "<a><b/><c/><c/></a>", "<a><b/><c/><d/></a>", "element d, line 1"},
      {&Limits::attribute_names, "<a b='' c='' xmlns=''><d b='' c='' xmlns='u'/></a>",
       "<a b='' c='' xmlns:c='u'><d d=''/></a>", "element d, line 1"},
      {&Limits::namespaces, "<a xmlns='u' xmlns:b='u'><b xmlns:c='u'/><b xmlns:c='u'/></a>",
       "<a xmlns='u' xmlns:b='u'><b xmlns:c='u'><c xmlns:d='u'/></b></a>", "element c, line 1"},
      {&Limits::namespaces, "<a><b xmlns='1'/><b xmlns='2'/><b xmlns='3'/></a>",
       "<a><b xmlns='1'/><b xmlns='2'/><b xmlns='3'/><b xmlns='4'/></a>", "element b, line 1"},
      {&Limits::declarations, "<!DOCTYPE a [<!ENTITY x 'y'><!ENTITY z 'y'><!ELEMENT a ANY>]><a/>",
       "<!DOCTYPE a [<!ENTITY x 'y'><!NOTATION z SYSTEM 'y'><!ELEMENT a ANY>\n"
       "<!ELEMENT b ANY>]><a/>",
       "line 2"},
      {&Limits::declarations,
       "<!DOCTYPE a [<!--" + Repeat("(", 50) + "--><!ENTITY b '" + Repeat("|", 50) +
           "'><!ELEMENT a (b" + Repeat("|b", 29) + ")>]><a/>",
       "<!DOCTYPE a [<!ELEMENT a (b" + Repeat(",b", 15) + ")>\n<!ATTLIST a b (c" +
           Repeat("|c", 14) + ")\n'(|('>]><a/>",
       "line 2"},
      {&Limits::declarations,
       InEncoding("IBM037", "<a>" + Repeat("(", 50) +
                                "<!--DOCTYP DDOCTYPE--><b>AIJRSZaijrsz09 .+&amp;*);-/%_>?:"
                                "</b>" +
                                Repeat("|", 30) + "</a>"),
       InEncoding("IBM037", "<!DOCTYPE a [<!ELEMENT a (b" + Repeat(",b", 14) +
                                ")>\n<!ATTLIST a b (c" + Repeat("|c", 14) + ") 'c'>]><a/>"),
       "line 2"},
      {&Limits::attributes,
       InEncoding("Shift_JIS", "<a b='\u2010' c='' d=''><![CDATA[='' \u2010]]></a>"),
       InEncoding("Shift_JIS", "<a><![CDATA[\u2010]><b '>]]>\n<c d='' e='' f='' g=''/></a>"),
       "line 2"},
      {&Limits::vectors, "<a>" + Repeat("<VectorInstance/>", 3) + "</a>",
       "<a>" + Repeat("<VectorInstance/>", 4) + "</a>", "element VectorInstance, line 1"},
      {&Limits::table_rows, "<a>" + table(3) + table(3) + "</a>", table(4), "element row, line 4"},
  };
  Limits limits;
  for (const auto& [limit, fits, exceeds, place] : cases) {
    limits = {};
    limits.*limit = 3;
    EXPECT_EQ(Refusal(fits, limits), "");
    EXPECT_EQ(Refusal(exceeds, limits), std::string("260318 ") + LimitNameOf(limit).about +
                                            " exceeds the limit of 3 (" + place + ')');
    EXPECT_EQ(Refusal(exceeds), "");
  }
  limits = {};
  limits.declarations = UINT64_MAX;
  EXPECT_EQ(Refusal("<!DOCTYPE a [<!ELEMENT a (b|c)>]><a/>", limits), "");
  limits = {};
  limits.document_size = 4;
  EXPECT_EQ(Refusal("<a/>", limits), "");
  EXPECT_THAT(Refusal("<a/> ", limits), testing::StartsWith("260318 the size of the document"));
}

TEST(Limits, RefuseTenMillionLevelsWithoutGoingThere) {
  EXPECT_THAT(Refusal(Repeat("<a>", 10000000)), testing::StartsWith("260318 the depth"));
}

TEST(Limits, TravelWithTheDocument) {
  Limits limits;
  limits.entries = 5;
  PmmlDocument first = PmmlDocument::FromText("<a/>", "a", limits);
  const PmmlDocument moved = std::move(first);
  limits.entries = 6;
  EXPECT_EQ(LimitsOf(moved.Dom()).entries, 5U);
  EXPECT_NO_THROW(CheckLimit(moved.Dom()->getDocumentElement(), &Limits::entries, 5));
  EXPECT_THROW(CheckLimit(moved.Dom()->getDocumentElement(), &Limits::entries, 6), SSException);
  EXPECT_EQ(LimitsOf(nullptr).entries, Limits{}.entries);
}

// The beginning, and then blanks forever.
class Endless : public std::streambuf {
 public:
  explicit Endless(std::string beginning) : beginning_(std::move(beginning)) {}
  std::size_t Given() const { return given_; }

 protected:
  int underflow() override {
    next_ = given_ < beginning_.size() ? beginning_[given_] : ' ';
    ++given_;
    setg(&next_, &next_, &next_ + 1);
    return traits_type::to_int_type(next_);
  }

 private:
  std::string beginning_;
  char next_ = ' ';
  std::size_t given_ = 0;
};

TEST(Limits, EndAnEndlessStream) {
  constexpr std::size_t kAhead = 128U << 10U;  // what a reader may hold
  Limits limits;
  limits.document_size = 1U << 20U;
  for (const auto& [beginning, code, most] :
       {std::tuple{"<a>", code::kBeyondLimit, std::size_t{1U << 20U}},
        std::tuple{"<a>&", code::kNotWellFormed, std::size_t{0}}}) {
    Endless endless(beginning);
    std::istream stream(&endless);
    try {
      PmmlDocument::FromStream(stream, "endless", limits);
      ADD_FAILURE() << "no error";
    } catch (const SSException& error) {
      EXPECT_EQ(error.GetErrorCode(), code);
    }
    EXPECT_LT(endless.Given(), most + kAhead);
  }
}

// Detects that a file is opened, or a port of this machine connected to.
class Trap {
 public:
  Trap() {
    std::ofstream(path_) << "secret";
    inotify_add_watch(opened_, path_.c_str(), IN_OPEN);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
    listen(listener_, 8);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    address_ = address;
  }
  ~Trap() {
    close(opened_);
    close(listener_);
    std::remove(path_.c_str());
  }
  Trap(const Trap&) = delete;
  Trap& operator=(const Trap&) = delete;

  const std::string& Path() const { return path_; }
  std::vector<std::string> Targets() const {
    return {"file://" + path_, path_,
            "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/x"};
  }
  // Whether that has happened since the last call.
  bool Sprung() {
    std::array<char, 4096> events;
    const bool opened = read(opened_, events.data(), events.size()) > 0;
    const int connection = accept(listener_, nullptr, nullptr);
    if (connection >= 0) close(connection);
    return opened || connection >= 0;
  }
  void Connect() const {
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    connect(client, reinterpret_cast<const sockaddr*>(&address_), sizeof(address_));
    close(client);
  }

 private:
  std::string path_ = testing::TempDir() + "svmscore_secret_" + std::to_string(getpid());
  int opened_ = inotify_init1(IN_NONBLOCK);
  int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
  sockaddr_in address_{};
};

TEST(Outside, IsNeverOpenedNorAsked) {
  Trap trap;
  std::ifstream(trap.Path()).get();
  ASSERT_TRUE(trap.Sprung()) << "the trap must notice an open file";
  trap.Connect();
  ASSERT_TRUE(trap.Sprung()) << "the trap must notice a connection";
  const std::string schema = "<a xmlns:s='http://www.w3.org/2001/XMLSchema-instance' s:";
  const struct {
    std::string before;  // what surrounds the target
    std::string after;
    std::string code;  // empty: the document is read, and the reference ignored
  } cases[] = {
      {"<!DOCTYPE a SYSTEM '", "'><a>&x;</a>", "260302"},
      {"<!DOCTYPE a SYSTEM '", "'><a b='&x;'/>", "260302"},
      {"<!DOCTYPE a PUBLIC 'p' '", "' [<!ENTITY y 'z'>]><a>&y;<b/>&x;<b/></a>", "260302"},
      {"<!DOCTYPE a [<!ENTITY x SYSTEM '", "'>]><a>&x;</a>", "260303"},
      {"<!DOCTYPE a [<!ENTITY x PUBLIC 'p' '", "'>]><a b='&x;'/>", "260302"},
      {"<!DOCTYPE a [<!ENTITY % x SYSTEM '", "'>%x;]><a/>", "260303"},
      {"<!DOCTYPE a [<!ENTITY x SYSTEM '", "' NDATA n>]><a/>", ""},
      {"<!DOCTYPE a SYSTEM '", "'><a/>", ""},
      {"<!DOCTYPE a PUBLIC 'p' '", "' [<!ENTITY y 'z'>]><a>&y;</a>", ""},
      {"<a xmlns:i='http://www.w3.org/2001/XInclude'><i:include href='", "'/></a>", ""},
      {schema + "schemaLocation='u ", "' xmlns='u'/>", ""},
      {schema + "noNamespaceSchemaLocation='", "'/>", ""},
      {"<?xml-stylesheet href='", "'?><a/>", ""},
  };
  for (const auto& [before, after, code] : cases) {
    for (const std::string& target : trap.Targets()) {
      EXPECT_EQ(Refusal(before + target + after).substr(0, 6), code) << before << target;
      EXPECT_FALSE(trap.Sprung()) << before << target;
    }
  }
}

}  // namespace
}  // namespace svmscore
