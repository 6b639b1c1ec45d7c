// The commands of the tool; each has a source of its own.
#pragma once

#include <functional>

#include <CLI/App.hpp>

namespace tesselctl {

// Runs after the arguments were read. Returns the exit code; throws NYXException or std::exception on failure.
using Command = std::function<int()>;

// Each adds its command; the one that the user names is stored in `chosen`.
void addDoctor(CLI::App& app, Command& chosen);
void addIpcServe(CLI::App& group, Command& chosen);
void addIpcSend(CLI::App& group, Command& chosen);
void addSecure(CLI::App& group, Command& chosen);
void addCheck(CLI::App& group, Command& chosen);
void addAcl(CLI::App& group, Command& chosen);
void addLock(CLI::App& app, Command& chosen);
void addMsg(CLI::App& app, Command& chosen);
void addProps(CLI::App& group, Command& chosen);
void addQm(CLI::App& app, Command& chosen);
void addRun(CLI::App& app, Command& chosen);
void addTraceView(CLI::App& group, Command& chosen);

}  // namespace tesselctl
