#include "Transformation.h"

#include <algorithm>

#include <tessel/NYXException.h>

namespace tesselctl {
namespace {

std::string echo(const std::string& request) { return request; }

std::string length(const std::string& request) { return std::to_string(request.size()); }

std::string lower(const std::string& request) {
  std::string reply = request;
  for (char& c : reply) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return reply;
}

std::string refuse(const std::string& request) { throw tessel::NYXException("refused: " + request); }

std::string reverse(const std::string& request) { return {request.rbegin(), request.rend()}; }

std::string upper(const std::string& request) {
  std::string reply = request;
  for (char& c : reply) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return reply;
}

}  // namespace

const std::map<std::string, Transformation>& transformations() {
  static const auto& all = *new std::map<std::string, Transformation>{
      {"echo", echo}, {"length", length}, {"lower", lower}, {"refuse", refuse}, {"reverse", reverse}, {"upper", upper},
  };
  return all;
}

}  // namespace tesselctl
