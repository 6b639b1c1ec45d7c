// What is demanded of the message catalogues, each demand by itself. A gate returns what it finds wrong.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tessel::host {

using Findings = std::vector<std::string>;

// As it stands in the file; a line that is no entry becomes one without a key.
struct Entry {
  std::string key;
  std::string text;
};

std::vector<Entry> entriesOf(const std::string& file);

// The numbers of the placeholders in the order of the text; -1 for a brace that belongs to none.
std::vector<int> placeholders(const std::string& text);

// The first definition of each key.
using Texts = std::map<std::string, std::string>;
Texts textsOf(const std::string& file);

// On the bytes of a file.
Findings bytesThatAreNoPlainLines(const std::string& file);
Findings linesThatAreNoEntries(const std::string& file);
Findings keysDefinedTwice(const std::string& file);
Findings textsThatAreEmpty(const std::string& file);
Findings keysOfNoKnownForm(const std::string& file);

// On the texts of one language.
Findings escapesThatAreMalformed(const Texts& texts);
Findings apostrophesThatStandAlone(const Texts& texts);
Findings placeholdersWithGaps(const Texts& texts);
Findings messagesWithoutExplanationOrAction(const Texts& texts);
Findings explanationsWithoutMessage(const Texts& texts);
Findings numbersUsedTwice(const Texts& texts);
Findings messagesWithoutTheirNumber(const Texts& texts);
// Fills each text as the library does, with an insert for each place.
Findings textsThatRenderWrongly(const Texts& texts);

// Against English.
Findings keysThatDiffer(const Texts& english, const Texts& translated);
Findings placeholdersThatDiffer(const Texts& english, const Texts& translated);
Findings severitiesThatDiffer(const Texts& english, const Texts& translated);
Findings textsLeftInEnglish(const Texts& english, const Texts& translated, const std::vector<std::string>& allowed);
Findings textsThatAreTooLong(const Texts& english, const Texts& translated);

}  // namespace tessel::host
