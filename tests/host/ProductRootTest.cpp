// Gives the whole test program a product root with the catalogues that are shipped, before the first one is read.
#include <gtest/gtest.h>

#include <filesystem>

#include <tessel/NLS.h>
#include <tessel/NYXUtils.h>

#include "internal/Bundles.h"
#include "support/TempFolder.h"

namespace tessel::host {
namespace {

namespace fs = std::filesystem;

class ProductEnvironment : public testing::Environment {
 public:
  // The folder goes when the process ends, whichever way a test ends it.
  void SetUp() override {
    static const test::TempFolder root;
    const fs::path shipped = fs::path(TESSEL_SOURCE_DIR) / "resources" / "messages";
    for (const auto& file : fs::directory_iterator(shipped)) {
      if (!file.is_regular_file()) continue;
      fs::create_directories(root.path() / "lib" / "messages");
      fs::copy_file(file, root.path() / "lib" / "messages" / file.path().filename());
    }
    NYXUtils::setenv("KTB_PROD", root.path().string());
  }
};

testing::Environment* const environment = testing::AddGlobalTestEnvironment(new ProductEnvironment);

}  // namespace

TEST(ProductRoot, HoldsTheCataloguesThatAreShipped) {
  ASSERT_NE(environment, nullptr);
  EXPECT_EQ(NLS::format(internal::elementsBundle(), "KTBNV_CAUSED_BY"), "caused by");
}

}  // namespace tessel::host
