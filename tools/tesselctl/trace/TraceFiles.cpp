#include "TraceFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace tesselctl::trace {
namespace {

namespace fs = std::filesystem;

constexpr const char* kGeneration = "%g";
constexpr const char* kDigits = "0123456789";
// More digits than a generation can have.
constexpr std::size_t kMostDigits = 10;

struct Generation {
  std::string pattern;
  std::uint64_t number = 0;
  std::string path;
};

struct Digits {
  std::size_t begin;
  std::size_t end;
};

// The last run of digits that ends before `end`.
std::optional<Digits> lastDigits(const std::string& name, std::size_t end) {
  if (end == 0) return std::nullopt;
  const std::size_t last = name.find_last_of(kDigits, end - 1);
  if (last == std::string::npos) return std::nullopt;
  const std::size_t before = name.find_last_not_of(kDigits, last);
  return Digits{before == std::string::npos ? 0 : before + 1, last + 1};
}

std::optional<Digits> generationDigits(const std::string& name) {
  const std::optional<Digits> last = lastDigits(name, name.size());
  if (!last || last->end != name.size() || last->begin == 0 || name[last->begin - 1] != '.') return last;
  const std::optional<Digits> earlier = lastDigits(name, last->begin);
  return earlier ? earlier : last;
}

// A generation is written without leading zeros.
bool isGeneration(const std::string& digits) {
  return !digits.empty() && digits.size() <= kMostDigits && digits.find_first_not_of(kDigits) == std::string::npos &&
         (digits == "0" || digits.front() != '0');
}

fs::path inFolder(const fs::path& path, const std::string& name) {
  return path.has_parent_path() ? path.parent_path() / name : fs::path(name);
}

Generation generationOf(const std::string& argument) {
  const fs::path path(argument);
  std::string name = path.filename().string();
  const std::optional<Digits> place = generationDigits(name);
  if (!place) return {argument, 0, argument};
  const std::string digits = name.substr(place->begin, place->end - place->begin);
  if (!isGeneration(digits)) return {argument, 0, argument};
  name.replace(place->begin, digits.size(), kGeneration);
  return {inFolder(path, name).generic_string(), std::stoull(digits), argument};
}

std::string withGeneration(std::string name, const std::string& digits) {
  for (std::size_t at = 0; (at = name.find(kGeneration, at)) != std::string::npos; at += digits.size()) {
    name.replace(at, 2, digits);
  }
  return name;
}

// The generation number in the name of a file, when the file is one of the pattern's.
std::optional<std::uint64_t> generationIn(const std::string& pattern, const std::string& name) {
  const std::size_t begin = pattern.find(kGeneration);
  if (name.compare(0, begin, pattern, 0, begin) != 0) return std::nullopt;
  const std::size_t end = std::min(name.find_first_not_of(kDigits, begin), name.size());
  if (end <= begin) return std::nullopt;
  const std::string digits = name.substr(begin, end - begin);
  if (!isGeneration(digits) || withGeneration(pattern, digits) != name) return std::nullopt;
  return std::stoull(digits);
}

std::vector<Generation> generationsOf(const std::string& argument) {
  const fs::path path(argument);
  const std::string pattern = path.filename().string();
  std::vector<Generation> found;
  std::error_code failed;
  for (const auto& entry : fs::directory_iterator(path.has_parent_path() ? path.parent_path() : ".", failed)) {
    const std::string name = entry.path().filename().string();
    const std::optional<std::uint64_t> number = generationIn(pattern, name);
    if (number) found.push_back({path.generic_string(), *number, inFolder(path, name).string()});
  }
  if (failed) throw std::runtime_error("cannot list the files of " + argument + ": " + failed.message());
  if (found.empty()) throw std::runtime_error("no file matches " + argument);
  return found;
}

// Files of one pattern, and their generations; one set for each pattern, in the order of the arguments.
using Group = std::vector<Generation>;

void add(std::vector<Group>& groups, const Generation& file) {
  const auto same = std::find_if(groups.begin(), groups.end(),
                                 [&](const Group& group) { return group.front().pattern == file.pattern; });
  if (same == groups.end()) {
    groups.push_back({file});
  } else if (std::none_of(same->begin(), same->end(),
                          [&](const Generation& g) { return fs::path(g.path) == fs::path(file.path); })) {
    same->push_back(file);
  }
}

FileSet setOf(Group group) {
  std::stable_sort(group.begin(), group.end(),
                   [](const Generation& a, const Generation& b) { return a.number > b.number; });
  // A file that is alone is known by its own name.
  const std::string& name = group.size() == 1 ? group.front().path : group.front().pattern;
  FileSet set{fs::path(name).filename().string(), {}};
  for (Generation& file : group) set.paths.push_back(std::move(file.path));
  return set;
}

}  // namespace

std::vector<FileSet> fileSets(const std::vector<std::string>& arguments) {
  std::vector<Group> groups;
  for (const std::string& argument : arguments) {
    const bool isPattern = fs::path(argument).filename().string().find(kGeneration) != std::string::npos;
    for (const Generation& file : isPattern ? generationsOf(argument) : Group{generationOf(argument)}) {
      add(groups, file);
    }
  }
  std::vector<FileSet> sets;
  sets.reserve(groups.size());
  for (Group& group : groups) sets.push_back(setOf(std::move(group)));
  return sets;
}

std::string readFile(const std::string& path) {
  const auto fail = [&](const char* action) {
    throw std::runtime_error(std::string("cannot ") + action + " " + path + ": " +
                             std::generic_category().message(errno));
  };
  errno = 0;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) fail("open");
  const std::streamoff size = file.tellg();
  // A folder opens on some systems, and then has no size or an absurd one.
  if (size < 0 || std::filesystem::is_directory(path)) fail("read");
  std::string bytes(static_cast<std::size_t>(size), '\0');
  file.seekg(0);
  file.read(bytes.data(), size);
  if (file.bad()) fail("read");
  // Shorter than it was when a running process has emptied it meanwhile.
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

}  // namespace tesselctl::trace
