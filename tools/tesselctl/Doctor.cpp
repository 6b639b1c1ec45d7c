#include <array>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <tessel/NYXUtils.h>

#include "Catalogue.h"
#include "Commands.h"
#include "Output.h"
#include "System.h"
#include "internal/CatalogueFile.h"

namespace tesselctl {
namespace {

using tessel::NYXUtils;

constexpr const char* kLibrary = "tesselnative.dll";
constexpr const char* kInstallJar =
    "Install the product again. Java programs need the jar of the library's version; native ones do not.";

struct Options {
  std::string logDirectory;
};

// What was looked at, and what to do when it is not as it should be.
struct Finding {
  std::string subject;
  std::string seen;
  std::string advice;  // empty when all is well
};

std::string joined(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

// Without the folder of the messages it is no product; then what is missing below it says nothing about the
// installation.
bool isProduct(const std::string& root) { return !root.empty() && isFolder(root + "/lib/messages"); }

Finding notLookedAt(const std::string& subject) {
  return {subject, "not looked at", "See the finding of the product root."};
}

Finding productRoot() {
  const std::string subject = "product root";
  const std::string root = NYXUtils::getKTBProdRoot();
  if (root.empty()) {
    return {subject, "not known",
            "Set the environment variable KTB_PROD to the folder that the product is installed in."};
  }
  if (!isFolder(root))
    return {subject, root + " is no folder", "Set KTB_PROD to the folder that the product is installed in."};
  if (!isProduct(root)) {
    return {
        subject, root + " has no folder lib/messages",
        "Set KTB_PROD to the folder that the product is installed in. If it is this one, install the product again."};
  }
  if (productIsNamed()) return {subject, root, {}};
  return {subject, root + " is beside this tool, but the environment does not name it",
          "Set the environment variable KTB_PROD to it. Other programs do not find their messages without."};
}

std::vector<std::string> missing(const std::vector<std::string>& names) {
  std::vector<std::string> result;
  for (const std::string& name : names) {
    if (!std::ifstream(catalogueFolder() + name)) result.push_back(name);
  }
  return result;
}

Finding currentCatalogue() {
  const std::string subject = "messages for the locale " + userLocale();
  if (!isProduct(NYXUtils::getKTBProdRoot())) return notLookedAt(subject);
  const std::string suffix = userCatalogueSuffix();
  const bool isWaitedFor = suffix != ".properties";
  const std::vector<std::string> names = catalogueNames(suffix);
  const std::vector<std::string> lost = missing(names);
  if (lost.empty()) return {subject, joined(names), {}};
  return {subject, "missing in " + catalogueFolder() + ": " + joined(lost),
          isWaitedFor ? "Install the product again. Until then programs of this user wait for the file without end."
                      : "Install the product again. Until then programs of this user show messages as bare keys."};
}

Finding allCatalogues() {
  const std::string subject = "messages of all languages";
  if (!isProduct(NYXUtils::getKTBProdRoot())) return notLookedAt(subject);
  std::vector<std::string> names;
  for (const std::string& suffix : tessel::internal::catalogueSuffixes()) {
    for (const std::string& name : catalogueNames(suffix)) names.push_back(name);
  }
  const std::vector<std::string> lost = missing(names);
  if (lost.empty()) return {subject, std::to_string(names.size()) + " files in " + catalogueFolder(), {}};
  return {
      subject, "missing in " + catalogueFolder() + ": " + joined(lost),
      "Install the product again. Programs of users with such a language wait for its file without end, or show bare "
      "keys in place of English."};
}

Finding library() {
  const std::string path = modulePath(kLibrary);
  const std::string version = fileVersion(path);
  const std::string seen = path + ", version " + (version.empty() ? "not known" : version);
  if (version == TESSEL_VERSION) return {"library", seen, {}};
  return {"library", seen,
          "This tool is of version " TESSEL_VERSION
          ". Install the product again, so that all of it is of one version."};
}

bool reads(std::istream& file, const std::string& wanted) {
  std::string bytes(wanted.size(), '\0');
  return file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) && bytes == wanted;
}

// Whether it begins as an archive does and ends in an archive's last record, which a file that was cut off has lost.
bool isWholeArchive(const std::string& path) {
  constexpr std::streamoff kLastRecord = 22;
  std::ifstream file(path, std::ios::binary);
  return reads(file, "PK\x03\x04") && file.seekg(-kLastRecord, std::ios::end) && reads(file, "PK\x05\x06");
}

// The version is that of the name: the jar tells its own to nobody but Java.
Finding jar() {
  const std::string subject = "companion jar";
  const std::string root = NYXUtils::getKTBProdRoot();
  if (!isProduct(root)) return notLookedAt(subject);
  const std::string folder = root + "/share/java/";
  const std::string name = "tessel-native-" TESSEL_VERSION ".jar";
  std::vector<std::string> others;
  for (const std::string& found : filesLike(folder + "tessel-native-*.jar")) {
    if (found == name && isWholeArchive(folder + name)) return {subject, folder + name, {}};
    if (found == name) return {subject, folder + name + " is damaged", kInstallJar};
    if (found.find("-sources") == std::string::npos && found.find("-javadoc") == std::string::npos)
      others.push_back(found);
  }
  return {subject, folder + name + " is missing" + (others.empty() ? std::string() : ", there is " + joined(others)),
          kInstallJar};
}

Finding java() {
  const std::string home = NYXUtils::getenv("JAVA_HOME");
  if (!home.empty()) {
    const std::string program = home + "\\bin\\java.exe";
    if (isFile(program)) return {"Java", program, {}};
    return {"Java", program + " is missing",
            "Correct the environment variable JAVA_HOME, or remove it to take Java from PATH."};
  }
  const std::string found = searchPath("java.exe");
  if (!found.empty()) return {"Java", found, {}};
  return {"Java", "not found", "Install Java 8 or later, and set JAVA_HOME or PATH. Native programs do not need it."};
}

// A folder that is still to be made is as good as its parent.
std::string nearestExisting(std::string path) {
  while (!isFolder(path) && !isFile(path)) {
    const std::string parent = NYXUtils::getParent(path);
    if (parent.empty() || parent == path) break;
    path = parent;
  }
  return path;
}

Finding logDirectory(const std::string& directory) {
  const std::string folder = nearestExisting(absolutePath(directory));
  std::string reason;
  if (canCreateFile(folder, reason)) return {"log directory", directory + " can be written", {}};
  return {"log directory", directory + ": " + reason,
          "Give the user who runs the product the right to create files in " + folder + "."};
}

// As the companion jar chooses it.
std::string usualLogDirectory() { return temporaryFolder() + "tessel-native\\logs"; }

int run(const Options& options) {
  const std::array<Finding, 7> findings{
      productRoot(), currentCatalogue(), allCatalogues(), library(), jar(), java(), logDirectory(options.logDirectory)};
  int code = 0;
  for (const Finding& finding : findings) {
    const bool good = finding.advice.empty();
    printLine((good ? "ok    " : "WRONG ") + finding.subject + ": " + finding.seen);
    if (!good) printLine("      " + finding.advice);
    if (!good) code = 1;
  }
  return code;
}

}  // namespace

void addDoctor(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("doctor", "Look whether the product is installed as its programs need it.");
  const auto options = std::make_shared<Options>();
  options->logDirectory = usualLogDirectory();
  command->add_option("--log-dir", options->logDirectory,
                      "The log directory to look at; the companion jar's unless given");
  command->footer(
      "Prints a line for each thing looked at, and what to do about each that is wrong. Exit codes: 0 all is\n"
      "well, 1 something is wrong, 2 wrong usage.");
  command->callback([options, &chosen] { chosen = [options] { return run(*options); }; });
}

}  // namespace tesselctl
