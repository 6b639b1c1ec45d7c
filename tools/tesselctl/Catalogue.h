// Where the library finds the texts of its messages, and what stands in the files.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tesselctl {

// Names the product folder to the library when the environment does not: the one the tool is installed in, or the one
// beside it in a build tree.
void findProduct();

// Whether the environment names the product folder, so that other programs find it as well.
bool productIsNamed();

// Throws std::runtime_error when the user's language has catalogues of its own and one of them is missing: the
// library would wait for it without end. To be called before the first message is formatted.
void checkCatalogues();

// The end of the names for a language as users write it, such as fr, pt-BR or zh_TW; for none, that of the user's.
//
// Throws std::runtime_error for a language that there are no catalogues in.
std::string catalogueSuffixOf(const std::string& language);

// The name of the user's locale; empty when the system names none.
std::string userLocale();

// The end of the names for the user's language.
std::string userCatalogueSuffix();

std::string catalogueFolder();

// The files of a language, without their folder.
std::vector<std::string> catalogueNames(const std::string& suffix);

// One numbered message. No escapes; apostrophes and placeholders as they stand in the file.
struct Message {
  std::string key;
  std::string text;
  std::string explanation;
  std::string action;

  std::string number() const { return key.substr(0, 9); }
};

// In the order of the file. Throws std::runtime_error when it cannot be read.
std::vector<Message> readMessages(const std::string& suffix);

}  // namespace tesselctl
