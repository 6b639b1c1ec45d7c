#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tessel/NLS.h>
#include <tessel/RasDescriptor.h>

#include "support/Captures.h"
#include "support/TempProduct.h"

namespace tessel {

struct NLSTest {
  template <class... Inserts>
  static std::string format(const std::string& bundle, const std::string& key, const Inserts*... inserts) {
    return NLS::getInstance().internalFormat("Caller", bundle, key, static_cast<int>(sizeof...(inserts)), inserts...);
  }
};

namespace {

using Texts = std::vector<std::string>;

// A catalogue with one message under the key KTB1, and the captures made since.
class Message {
 public:
  explicit Message(const std::string& text) : bundle_("x.Message" + std::to_string(++count_)), rd_("Caller", bundle_) {
    product_.writeCatalogue(bundle_.substr(2), "KTB1=" + text + "\n");
  }

  template <class... Inserts>
  std::string with(const Inserts&... inserts) const {
    return NLS::format(rd_, "KTB1", inserts...);
  }
  const std::string& bundle() const { return bundle_; }

  // The probe and the report of each mismatch.
  Texts reports() const {
    Texts reports = captures_.values("Cause:");
    const Texts probes = captures_.values("Probe:");
    for (std::size_t i = 0; i < reports.size(); ++i) reports[i] = probes[i] + ": " + reports[i];
    return reports;
  }
  const test::Captures& captures() const { return captures_; }

 private:
  static inline int count_ = 0;

  test::TempProduct product_;
  std::string bundle_;
  RasDescriptor rd_;
  test::Captures captures_;
};

std::string unmatched(const std::string& counts) {
  return "FFDC_001: class NYXException: NLS::format() call from class: Caller for key KTB1 - Not all inserts matched "
         "(" +
         counts + " used)";
}

std::string insufficient(const std::string& count) {
  return "FFDC_002: class NYXException: NLS::format() call from class: Caller for key KTB1 - insufficient inserts (" +
         count + " were supplied)";
}

TEST(NLS, FillsThePlaceholder) {
  const Message message("File {0} not found");
  EXPECT_EQ("File a.txt not found", message.with("a.txt"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, FillsFourPlaceholdersInTheirOrder) {
  const Message message("{3}-{1}-{0}-{2}");
  EXPECT_EQ("d-b-a-c", message.with("a", "b", "c", "d"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, TakesOneToFourInserts) {
  EXPECT_EQ("a", Message("{0}").with("a"));
  EXPECT_EQ("a b", Message("{0} {1}").with("a", "b"));
  EXPECT_EQ("a b c", Message("{0} {1} {2}").with("a", "b", "c"));
  EXPECT_EQ("a b c d", Message("{0} {1} {2} {3}").with("a", "b", "c", "d"));
}

TEST(NLS, TextWithoutPlaceholdersNeedsNoInsert) {
  const Message message("All is well");
  EXPECT_EQ("All is well", message.with());
  EXPECT_EQ("All is well", NLS::format(message.bundle(), "KTB1"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, PlaceholderInAnInsertIsFilledToo) {
  const Message message("{0} to {1}");
  EXPECT_EQ("B to {1}", message.with("{1}", "B"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, TwoApostrophesStandForOne) {
  EXPECT_EQ("It's x", Message("It''s {0}").with("x"));
  EXPECT_EQ("''", Message("''''").with());
  EXPECT_EQ("''", Message("'''").with());
  EXPECT_EQ("'", Message("'").with());
  EXPECT_EQ("a'b'c", Message("a''b'c").with());
}

TEST(NLS, ApostrophesQuoteNothingAndInsertsKeepTheirs) { EXPECT_EQ("'a''b'", Message("'{0}'").with("a''b")); }

TEST(NLS, UnknownKeyGivesKeyAndInserts) {
  const Message message("unused");
  const std::string a("a");
  const std::string* null = nullptr;
  EXPECT_EQ("KTBNV9999_NONE a null", NLSTest::format(message.bundle(), "KTBNV9999_NONE", &a, null));
  EXPECT_EQ("KTBNV9999_NONE", NLS::format(message.bundle(), "KTBNV9999_NONE"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, TextThatEqualsItsKeyCountsAsUnknown) {
  const test::TempProduct product;
  product.writeCatalogue("KeyIsText", "KTB{0}\n");
  EXPECT_EQ("KTB{0} a", NLS::format(RasDescriptor("Caller", "x.KeyIsText"), "KTB{0}", "a"));
}

TEST(NLS, OnlyTheFirstOfEqualPlaceholdersIsFilled) {
  const Message message("{0} {0}");
  EXPECT_EQ("x {0}", message.with("x"));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, InsertWithoutPlaceholderIsCaptured) {
  const Message message("{0}");
  EXPECT_EQ("x", message.with("x", "y"));
  EXPECT_EQ(Texts{unmatched("2 were supplied, only 1")}, message.reports());
}

TEST(NLS, PlaceholderWithoutInsertIsCaptured) {
  const Message message("{0} and {1}");
  EXPECT_EQ("x and {1}", message.with("x"));
  EXPECT_EQ(Texts{insufficient("1")}, message.reports());
}

TEST(NLS, PlaceholderWithoutAnyInsertIsCaptured) {
  const Message message("{0}");
  EXPECT_EQ("{0}", message.with());
  EXPECT_EQ(Texts{insufficient("0")}, message.reports());
}

TEST(NLS, NullInsertFillsNothing) {
  const Message message("{0}");
  const std::string* null = nullptr;
  EXPECT_EQ("{0}", NLSTest::format(message.bundle(), "KTB1", null));
  EXPECT_EQ(Texts{unmatched("1 were supplied, only 0")}, message.reports());
}

TEST(NLS, NullInsertEndsTheFilling) {
  const Message message("{0} {1} {2}");
  const std::string a("a");
  const std::string* null = nullptr;
  EXPECT_EQ("a {1} {2}", NLSTest::format(message.bundle(), "KTB1", &a, null, &a));
  EXPECT_EQ(Texts{unmatched("3 were supplied, only 1")}, message.reports());
}

TEST(NLS, PlaceholdersThatDoNotStartAtZeroGetNothing) {
  const Message message("{1}");
  EXPECT_EQ("{1}", message.with("a"));
  EXPECT_EQ(Texts{unmatched("1 were supplied, only 0")}, message.reports());
}

TEST(NLS, CharacterBehindNineIsAColon) {
  const Message message("{0}{1}{2}{3}{4}{5}{6}{7}{8}{9}{:}");
  const std::string x("x");
  EXPECT_EQ("xxxxxxxxxxx", NLSTest::format(message.bundle(), "KTB1", &x, &x, &x, &x, &x, &x, &x, &x, &x, &x, &x));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, ShortTextsHaveNoPlaceholders) {
  EXPECT_EQ("{0", Message("{0").with());
  EXPECT_EQ("", Message("").with());
}

TEST(NLS, EmptyInsertFillsItsPlaceholder) {
  const Message message("<{0}>");
  EXPECT_EQ("<>", message.with(""));
  EXPECT_EQ(Texts{}, message.reports());
}

TEST(NLS, MismatchWithoutDescriptorNamesTheClassUnknown) {
  const Message message("{0}");
  EXPECT_EQ("{0}", NLS::format(message.bundle(), "KTB1"));
  EXPECT_EQ(Texts{"FFDC_002: class NYXException: NLS::format() call from class: Unknown for key KTB1 - insufficient "
                  "inserts (0 were supplied)"},
            message.reports());
}

TEST(NLS, CaptureNamesTheFormattingWorker) {
  const Message message("{0}");
  message.with("x", "y");
  EXPECT_EQ(Texts{"NLS"}, message.captures().values("Class:"));
  EXPECT_EQ(Texts{"internalFormat"}, message.captures().values("Method:"));
  EXPECT_EQ(Texts{""}, message.captures().values("Instance:"));
}

}  // namespace
}  // namespace tessel
