// Which catalogue file the user's default locale chooses.
#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <clocale>
#include <string>

#include <tessel/ResourceBundle.h>

#include "support/ImportHook.h"
#include "support/RecordingHandler.h"
#include "support/TempProduct.h"
#include "support/TraceScope.h"

namespace tessel::test {
namespace {

class UserLocale : public testing::Test {
 protected:
  // The library's own catalogues are read, once and for all, while the product root is still the real one.
  static void SetUpTestSuite() { const TraceScope trace(""); }

  UserLocale() {
    product_.writeCatalogue("Locale", "KTB1=English\n");
    product_.writeCatalogue("Locale_fr", "KTB1=French\n");
    product_.writeCatalogue("Locale_pt_BR", "KTB1=Portuguese\n");
  }

  // Past the cache.
  static std::string text() { return ResourceBundle("x.Locale").getString("KTB1"); }

  void setLocale(const std::wstring& name) {
    hook_.replaceWith([name](wchar_t* buffer, int size) {
      EXPECT_GE(size, LOCALE_NAME_MAX_LENGTH);
      std::copy_n(name.c_str(), name.size() + 1, buffer);
      return static_cast<int>(name.size() + 1);
    });
  }

  const TempProduct product_;
  ImportHook<"GetUserDefaultLocaleName", decltype(GetUserDefaultLocaleName)> hook_;
};

TEST_F(UserLocale, ChoosesTheFile) {
  setLocale(L"fr-CA");
  EXPECT_EQ(text(), "French");
  setLocale(L"pt-PT");
  EXPECT_EQ(text(), "Portuguese");
  setLocale(L"sv-SE");
  EXPECT_EQ(text(), "English");
}

TEST_F(UserLocale, ThatCannotBeReadMeansEnglish) {
  hook_.failAlways(ERROR_INVALID_PARAMETER);
  const TraceScope trace("ResourceBundle=MODERATE");
  const RecordingHandler log("ResourceBundle");
  EXPECT_EQ(text(), "English");
  EXPECT_THAT(log.messages(), testing::Contains(testing::HasSubstr("[Caught exception determining locale]")));
}

TEST_F(UserLocale, LeavesTheLocaleOfTheProgramAlone) {
  setLocale(L"fr-FR");
  const std::string before = std::setlocale(LC_ALL, nullptr);
  EXPECT_EQ(text(), "French");
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
}  // namespace tessel::test
