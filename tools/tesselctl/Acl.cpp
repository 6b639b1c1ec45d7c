#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessel/NYXUtils.h>

#include "AccessText.h"
#include "Commands.h"
#include "Output.h"
#include "internal/pc/DescriptorReader.h"

namespace tesselctl {
namespace {

using tessel::internal::AccessEntry;
using tessel::internal::DescriptorReader;
using tessel::internal::EntryRead;

using Block = std::vector<std::byte>;

std::runtime_error failure(const std::string& path) {
  return std::runtime_error("cannot read the access list of " + path + ": " + tessel::NYXUtils::getLastErrorMessage());
}

Block descriptorOf(const std::string& path) {
  DWORD size = 0;
  GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  Block block(size);
  if (!GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, block.data(), size, &size)) throw failure(path);
  return block;
}

std::string numbersOf(PSID sid) {
  constexpr std::size_t kAuthorityBytes = 6;
  const BYTE* authority = GetSidIdentifierAuthority(sid)->Value;
  unsigned long long value = 0;
  for (std::size_t i = 0; i < kAuthorityBytes; ++i) value = value << 8U | authority[i];
  std::string text = "S-1-" + std::to_string(value);
  for (DWORD i = 0; i < *GetSidSubAuthorityCount(sid); ++i) text += '-' + std::to_string(*GetSidSubAuthority(sid, i));
  return text;
}

// "DOMAIN\name", or the numbers of a principal that has no name here.
std::string nameOf(PSID sid) {
  std::array<char, 256> name{};
  std::array<char, 271> domain{};
  auto nameLength = static_cast<DWORD>(name.size());
  auto domainLength = static_cast<DWORD>(domain.size());
  SID_NAME_USE use{};
  const bool found =
      LookupAccountSidA(nullptr, sid, name.data(), &nameLength, domain.data(), &domainLength, &use) != FALSE;
  if (!found || name.front() == '\0') return numbersOf(sid);
  const std::string account = name.data();
  return domain.front() == '\0' ? account : std::string(domain.data()) + '\\' + account;
}

// Nothing when the file has no list.
std::optional<std::vector<Access>> accessListOf(const std::string& path) {
  const Block block = descriptorOf(path);
  DescriptorReader reader(block.data(), block.size());
  if (!reader.findList()) throw failure(path);
  if (!reader.hasList()) return std::nullopt;
  std::vector<Access> entries;
  for (AccessEntry entry{};;) {
    const EntryRead read = reader.next(entry);
    if (read == EntryRead::failed) throw failure(path);
    if (read == EntryRead::end) return entries;
    entries.push_back({entry.type, entry.flags, entry.mask, entry.sid ? nameOf(entry.sid) : "-"});
  }
}

int run(const std::string& path) {
  const auto list = accessListOf(path);
  if (!list) {
    printLine(path + ": no access list, everybody has every access");
    return 0;
  }
  const std::vector<Access> entries = folded(*list);
  printLine(path + ": " + std::to_string(entries.size()) + (entries.size() == 1 ? " entry" : " entries"));
  std::size_t width = 0;
  for (const Access& entry : entries) width = std::max(width, entry.principal.size());
  for (const Access& entry : entries) printLine(lineOf(entry, width));
  return 0;
}

}  // namespace

void addAcl(CLI::App& group, Command& chosen) {
  CLI::App* command = group.add_subcommand("acl", "Print the access list of a file or directory.");
  const auto path = std::make_shared<std::string>();
  command->add_option("PATH", *path, "File or directory")->required();
  command->footer(
      "An entry on each line, in their order: what it does, for whom, the rights as a number and by name, and where "
      "it\n"
      "applies. Two entries that NTFS makes out of one, for the directory and for what is below, are shown as one.");
  command->callback([path, &chosen] { chosen = [path] { return run(*path); }; });
}

}  // namespace tesselctl
