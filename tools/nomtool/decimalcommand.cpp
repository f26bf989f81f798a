// One operation on two decimals. Operands are stored decimals, at most 23 digits and 23 places, so
// that class Decimal holds every result in full: a product has 46 digits, a quotient 69.
#include "commands.h"
#include "storednumber.h"

#include "sys/messages.h"

#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

struct Operation {
  const char* symbol;
  bool divides;
  Decimal (*apply)(const Decimal& left, const Decimal& right);
};

constexpr Operation kOperations[] = {
    {"+", false, [](const Decimal& a, const Decimal& b) { return a + b; }},
    {"-", false, [](const Decimal& a, const Decimal& b) { return a - b; }},
    {"x", false, [](const Decimal& a, const Decimal& b) { return a * b; }},
    {"*", false, [](const Decimal& a, const Decimal& b) { return a * b; }},
    {"/", true, [](const Decimal& a, const Decimal& b) { return a.realDivide(b); }},
    {"//", true, [](const Decimal& a, const Decimal& b) { return a / b; }},
    {"%", true, [](const Decimal& a, const Decimal& b) { return a % b; }},
};

const Operation* findOperation(const std::string& symbol) {
  for (const Operation& operation : kOperations) {
    if (symbol == operation.symbol) return &operation;
  }
  return nullptr;
}

// Stores an operand; one that does not go in exactly is reported and refused.
bool storeOperand(const std::string& text, DskDecimal& stored, std::ostream& err) {
  const StoredNumber number = storeNumber(text);
  const int status = number.status == kNoError && !number.exact ? kDecimalOverflow : number.status;
  if (status != kNoError) err << inQuotes(trimmed(text)) << ": " << messageText(status) << '\n';
  stored = number.stored;
  return status == kNoError;
}

void print(const DecimalOptions& options, const Json& more, std::ostream& out) {
  Json root = {{"left", trimmed(options.left)},
               {"operation", options.operation},
               {"right", trimmed(options.right)}};
  root.update(more);
  out << root.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int compare(const DecimalOptions& options, const DskDecimal& left, const DskDecimal& right,
            std::ostream& out) {
  const int order = nomDecimalCompare(&left, &right);
  if (options.json) {
    print(options, {{"result", order}}, out);
  } else {
    out << order << '\n';
  }
  return kExitDone;
}

}  // namespace

int decimalCommand(const DecimalOptions& options, std::ostream& out, std::ostream& err) {
  const Operation* operation = findOperation(options.operation);
  if (operation == nullptr && options.operation != "cmp") {
    err << "nomtool: " << inQuotes(options.operation) << " is no operation; see --help\n";
    return kExitUsage;
  }
  DskDecimal left;
  DskDecimal right;
  // Both operands are stored first, so that both are reported.
  const bool isLeftStored = storeOperand(options.left, left, err);
  if (!storeOperand(options.right, right, err) || !isLeftStored) return kExitRefused;
  if (operation == nullptr) return compare(options, left, right, out);
  if (operation->divides && Decimal(right) == Decimal::Zero) {
    err << "division by zero: " << messageText(kInvalidParameterValue) << '\n';
    return kExitRefused;
  }

  const Decimal result = operation->apply(Decimal(left), Decimal(right));
  DskDecimal stored;
  if (!result.decimalToDskDecimal(stored, 255)) {
    err << messageText(kDecimalOverflow) << '\n';
    return kExitRefused;
  }
  if (options.json) {
    print(options, {{"result", decimalText(result)}, {"stored", decimalText(stored)}}, out);
  } else {
    out << decimalText(result) << '\n';
    if (result != Decimal(stored)) err << "stored as " << decimalText(stored) << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
