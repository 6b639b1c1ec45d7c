#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "Commands.h"
#include "Output.h"
#include "Text.h"
#include "internal/MessageText.h"

namespace tesselctl {
namespace {

using tessel::internal::collapseApostrophes;

struct Options {
  std::string message;
  std::vector<std::string> inserts;
  std::string language;
  std::string word;
};

std::string shown(std::string text) {
  collapseApostrophes(text);
  return text;
}

// "KTBNV0087", with or without the letter of its severity or the rest of the key, or just "87".
const Message& find(const std::vector<Message>& messages, const std::string& wanted) {
  constexpr std::size_t kDigits = 4;
  std::string name = foldCase(wanted);
  const bool isNumber = !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
  if (isNumber && name.size() <= kDigits) name = "KTBNV" + std::string(kDigits - name.size(), '0') + name;
  for (const Message& message : messages) {
    const std::string number = message.number();
    if (name == number || name == message.key ||
        (name.size() == number.size() + 1 && message.text.rfind(name, 0) == 0)) {
      return message;
    }
  }
  throw std::runtime_error("there is no message " + wanted);
}

// As the library fills it; without inserts the places stay to be seen.
std::string rendered(const Message& message, const std::vector<std::string>& inserts) {
  std::string text = shown(message.text);
  if (inserts.empty()) return text;
  std::vector<const std::string*> pointers;
  pointers.reserve(inserts.size());
  for (const std::string& insert : inserts) pointers.push_back(&insert);
  const auto filled = tessel::internal::fillPlaceholders(text, pointers.data(), static_cast<int>(pointers.size()));
  if (filled.match != tessel::internal::Match::complete) {
    throw std::runtime_error("message " + message.number() + " takes another number of inserts than " +
                             std::to_string(inserts.size()) + ": " + shown(message.text));
  }
  return text;
}

bool contains(const std::string& text, const std::string& foldedWord) {
  return foldCase(shown(text)).find(foldedWord) != std::string::npos;
}

int search(const std::vector<Message>& messages, const std::string& word) {
  const std::string wanted = foldCase(word);
  bool found = false;
  for (const Message& message : messages) {
    const bool here =
        contains(message.text, wanted) || contains(message.explanation, wanted) || contains(message.action, wanted);
    if (here) printLine(shown(message.text));
    found = found || here;
  }
  if (!found) throw std::runtime_error("no message contains " + word);
  return 0;
}

int run(const Options& options) {
  const std::string suffix = options.language.empty() ? userCatalogueSuffix() : catalogueSuffixOf(options.language);
  const std::vector<Message> messages = readMessages(suffix);
  if (!options.word.empty()) return search(messages, textOfArgument(options.word));
  const Message& message = find(messages, options.message);
  std::vector<std::string> inserts;
  for (const std::string& insert : options.inserts) inserts.push_back(textOfArgument(insert));
  printLine(rendered(message, inserts));
  printLine("\n" + shown(message.explanation));
  printLine("\n" + shown(message.action));
  return 0;
}

}  // namespace

void addMsg(CLI::App& app, Command& chosen) {
  CLI::App* command =
      app.add_subcommand("msg", "Explain a message of the library: its text, what happened, what to do.");
  const auto options = std::make_shared<Options>();
  CLI::Option* message = command->add_option("MESSAGE", options->message, "Its number, such as KTBNV0087 or 87");
  command
      ->add_option("INSERT", options->inserts, "What stands in the places of the text, in the order of their numbers")
      ->needs(message);
  CLI::Option* word =
      command->add_option("--search", options->word, "List the messages that contain this word or number instead")
          ->excludes(message);
  command->add_option("--lang", options->language, "The language, such as fr, pt_BR or zh-TW; the user's unless given");
  command->footer("Words are found in texts, explanations and actions; upper and lower case are the same.");
  command->callback([options, message, word, &chosen] {
    if (!word->empty() && options->word.empty()) throw CLI::ValidationError("--search", "a word is needed");
    if (message->empty() && word->empty()) throw CLI::RequiredError("MESSAGE or --search");
    chosen = [options] { return run(*options); };
  });
}

}  // namespace tesselctl
