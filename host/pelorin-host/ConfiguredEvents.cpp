#include "ConfiguredEvents.h"

#include <cctype>
#include <fstream>
#include <sstream>

namespace PelorinHost {
namespace {

const char kDefaultPath[] = "/fs/sda0/quillan/events";

std::string Trimmed(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) return std::string();
  const size_t end = text.find_last_not_of(" \t\r");
  return text.substr(begin, end - begin + 1);
}

bool IsKey(const std::string& text, const char* key) {
  size_t i = 0;
  for (; i < text.size() && key[i] != '\0'; ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) !=
        std::tolower(static_cast<unsigned char>(key[i]))) {
      return false;
    }
  }
  return i == text.size() && key[i] == '\0';
}

}  // namespace

std::string ConfiguredEvents::FromText(const std::string& text) {
  std::string value;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    line = Trimmed(line);
    if (line.empty() || line[0] == '#' || line.compare(0, 2, "//") == 0) continue;
    const size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    if (IsKey(Trimmed(line.substr(0, equals)), "eventsFile")) {
      value = Trimmed(line.substr(equals + 1));
    }
  }
  return value;
}

std::string ConfiguredEvents::PathIn(const std::string& storageRoot) {
  std::ifstream file(storageRoot + "/quillan/Pelorin.cfg", std::ios::binary);
  std::ostringstream text;
  if (file) text << file.rdbuf();
  const std::string value = FromText(text.str());
  return value.empty() ? kDefaultPath : value;
}

}  // namespace PelorinHost
