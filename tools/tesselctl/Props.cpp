#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXPropConstant.h>
#include <tessel/NativeProperties.h>

#include "Commands.h"
#include "Output.h"
#include "internal/PropertiesText.h"

namespace tesselctl {
namespace {

using tessel::NativePropertyItem;

struct Options {
  std::string file;
  std::vector<std::string> keys;
};

constexpr std::size_t kKeyWidth = 31;
constexpr std::size_t kValueWidth = 20;
constexpr std::size_t kTypeWidth = 9;
constexpr std::size_t kDefaultWidth = 9;

std::string column(const std::string& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text + "  ";
}

std::string typeText(const NativePropertyItem& item) {
  switch (item.getType()) {
    case NativePropertyItem::INTEGER:
      return "integer";
    case NativePropertyItem::BOOLEAN:
      return "boolean";
    default:
      return "string";
  }
}

std::string defaultText(const NativePropertyItem& item) {
  switch (item.getType()) {
    case NativePropertyItem::INTEGER:
      return std::to_string(item.getDefaultIntegerValue());
    case NativePropertyItem::BOOLEAN:
      return item.getDefaultBooleanValue() ? "true" : "false";
    default:
      return item.getDefaultStringValue();
  }
}

std::string rangeText(const NativePropertyItem& item) {
  if (item.getType() != NativePropertyItem::INTEGER) return {};
  return std::to_string(item.getMinimum()) + " to " + std::to_string(item.getMaximum());
}

// Throws NYXException when the value is not one of the item's.
void check(const NativePropertyItem& item, const std::string& value) {
  switch (item.getType()) {
    case NativePropertyItem::INTEGER:
      item.getIntegerValue(&value);
      break;
    case NativePropertyItem::BOOLEAN:
      item.getBooleanValue(&value);
      break;
    default:
      break;
  }
}

std::string contents(const std::string& path) {
  // The library reports a file that cannot be opened.
  tessel::NativeProperties().loadProperties(path);
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The keys that are known, then those that are in the file only.
class Table {
 public:
  explicit Table(const Options& options) : options_(options), file_(contents(options.file)) {}

  // Returns the exit code.
  int print() {
    printLine(column("KEY", kKeyWidth) + column("VALUE", kValueWidth) + column("TYPE", kTypeWidth) +
              column("DEFAULT", kDefaultWidth) + "RANGE");
    for (const NativePropertyItem* item : tessel::NYXPropConstant::getInstance().getItems()) {
      known_.insert(item->getKey());
      if (isWanted(item->getKey())) printKnown(*item);
    }
    for (const auto& entry : file_.entries()) {
      const std::string key(entry.key);
      if (known_.count(key) == 0 && isWanted(key)) printUnknown(key, std::string(entry.value));
    }
    for (const std::string& key : options_.keys) {
      if (known_.count(key) == 0 && !file_.find(key)) fail("no such key: " + key);
    }
    return failed_ ? 1 : 0;
  }

 private:
  bool isWanted(const std::string& key) const {
    return options_.keys.empty() || std::find(options_.keys.begin(), options_.keys.end(), key) != options_.keys.end();
  }

  void printKnown(const NativePropertyItem& item) {
    const auto* entry = file_.find(item.getKey());
    const std::string value = entry ? std::string(entry->value) : "(default)";
    std::string line = column(item.getKey(), kKeyWidth) + column(value, kValueWidth) +
                       column(typeText(item), kTypeWidth) + column(defaultText(item), kDefaultWidth) + rangeText(item);
    printLine(line.substr(0, line.find_last_not_of(' ') + 1));
    try {
      if (entry) check(item, value);
    } catch (const tessel::NYXException& exception) {
      fail(exception.getMessage());
    }
  }

  static void printUnknown(const std::string& key, const std::string& value) {
    printLine(column(key, kKeyWidth) + column(value, kValueWidth) + "unknown");
  }

  void fail(const std::string& reason) {
    printError(options_.file + ": " + reason);
    failed_ = true;
  }

  const Options& options_;
  const tessel::internal::PropertiesText file_;
  std::set<std::string> known_;
  bool failed_ = false;
};

}  // namespace

void addProps(CLI::App& group, Command& chosen) {
  CLI::App* command =
      group.add_subcommand("props", "Show the values of a properties file with their types, defaults and ranges.");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->file, "Properties file to read")->required();
  command->add_option("KEY", options->keys, "Show these keys only");
  command->footer(
      "Every known key is shown, \"(default)\" for one that is not in the file, then the keys that no program reads,\n"
      "marked \"unknown\". A value that is not of its type or out of its range is reported on standard error, and so\n"
      "is a KEY that is neither known nor in the file; the exit code is then 1.");
  command->callback([options, &chosen] { chosen = [options] { return Table(*options).print(); }; });
}

}  // namespace tesselctl
