// Character entities by name ("eacute") or by code point (233, U+E9), or the whole table as the
// library writes it. A row shows the name, the code point and the description.
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/messages.h"
#include "sys/textutil.h"

#include <nlohmann/json.hpp>
#include <sstream>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kNoEntity = 0x7FFFFFFF;

struct Entity {
  std::string name;
  int codePoint;
  std::string description;
};

// The code point that an argument shows; no name begins with a digit or has a plus sign.
std::optional<int> codePointOf(std::string_view text) {
  if (text.starts_with("U+") || text.starts_with("u+")) return numberOf<int>(text.substr(2), 16);
  return numberOf<int>(text);
}

std::optional<Entity> findEntity(const std::string& argument) {
  const char* description = nullptr;
  if (const std::optional<int> codePoint = codePointOf(trimmed(argument))) {
    const char* name = nullptr;
    if (!findCharEntityByNumber(*codePoint, &name, &description)) return std::nullopt;
    return Entity{name, *codePoint, description};
  }
  const std::uint32_t codePoint = findCharEntityByName(argument.c_str(), &description);
  if (codePoint == kNoEntity) return std::nullopt;
  return Entity{argument, static_cast<int>(codePoint), description};
}

std::vector<Entity> wholeTable() {
  std::string rows(dumpCharEntityTable(nullptr, 0), '\0');
  rows.resize(dumpCharEntityTable(rows.data(), static_cast<std::uint32_t>(rows.size())));
  std::vector<Entity> table;
  std::istringstream lines(rows);
  Entity entity;
  while (std::getline(lines, entity.name, '\t') && lines >> entity.codePoint && lines.get() &&
         std::getline(lines, entity.description, '\r') && lines.get()) {
    table.push_back(entity);
  }
  return table;
}

}  // namespace

int entitiesCommand(const EntitiesOptions& options, std::ostream& out, std::ostream& err) {
  std::vector<Entity> entities;
  int exit = kExitDone;
  if (options.entities.empty()) entities = wholeTable();
  for (const std::string& argument : options.entities) {
    if (const std::optional<Entity> entity = findEntity(argument)) {
      entities.push_back(*entity);
    } else {
      exit = kExitRefused;
      err << inQuotes(argument) << ": no such entity: " << messageText(kInvalidParameterValue)
          << '\n';
    }
  }
  Json list = Json::array();
  for (const auto& [name, codePoint, description] : entities) {
    if (options.json) {
      list.push_back({{"name", name}, {"codePoint", codePoint}, {"description", description}});
      continue;
    }
    const std::string number = std::to_string(codePoint);
    constexpr std::size_t kNameWidth = 20, kNumberWidth = 5;
    out << name << std::string(kNameWidth - name.size() + kNumberWidth + 2 - number.size(), ' ')
        << number << "  " << description << '\n';
  }
  if (options.json) out << list.dump(2) << '\n';
  return exit;
}

}  // namespace nomtool
