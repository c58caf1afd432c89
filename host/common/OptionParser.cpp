#include "host/common/OptionParser.h"

#include <utility>

#include "host/common/TerminalText.h"

namespace PelorinTools {

OptionParser::OptionParser(const Definition* definitions, size_t count,
                           std::vector<std::string> arguments)
    : m_definitions(definitions), m_count(count), m_arguments(std::move(arguments)) {}

bool OptionParser::Next(Item* item) {
  *item = Item();
  while (m_index < m_arguments.size()) {
    std::string argument = m_arguments[m_index++];
    if (!m_optionsEnded && argument == "--") {
      m_optionsEnded = true;
      continue;
    }
    if (m_optionsEnded || argument.size() < 2 || argument[0] != '-') {
      item->value = std::move(argument);
      return true;
    }
    const size_t equals = argument[1] == '-' ? argument.find('=') : std::string::npos;
    m_hasInline = equals != std::string::npos;
    m_inline = m_hasInline ? argument.substr(equals + 1) : std::string();
    const std::string name = argument.substr(0, equals);
    item->option = Find(name);
    if (item->option == nullptr) return Fail("unknown option '" + name + "'");
    return TakeValue(*item->option, name, item);
  }
  return false;
}

std::string OptionParser::Usage(const std::string& program, const std::string& message) {
  return program + ": " + TerminalText::Escaped(message) + " (see '" + program + " --help')";
}

const OptionParser::Definition* OptionParser::Find(const std::string& name) const {
  for (size_t i = 0; i < m_count; ++i) {
    const Definition& definition = m_definitions[i];
    const bool isShort =
        name.size() == 2 && definition.shortName != 0 && name[1] == definition.shortName;
    if (name == definition.name || isShort) return &definition;
  }
  return nullptr;
}

bool OptionParser::TakeValue(const Definition& definition, const std::string& name, Item* item) {
  if (definition.kind == Kind::kFlag) {
    return m_hasInline ? Fail("option '" + name + "' takes no value") : true;
  }
  if (m_hasInline) {
    item->value = m_inline;
  } else if (m_index < m_arguments.size() &&
             (definition.kind == Kind::kValue || definition.looksLikeValue(m_arguments[m_index]))) {
    item->value = m_arguments[m_index++];
  } else if (definition.kind == Kind::kValue) {
    return Fail("option '" + name + "' needs a value");
  } else {
    return true;
  }
  item->hasValue = true;
  return true;
}

bool OptionParser::Fail(const std::string& message) {
  m_error = message;
  m_index = m_arguments.size();
  return false;
}

}  // namespace PelorinTools
