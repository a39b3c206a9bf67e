#include <algorithm>

#include "tools/scriptrunner/Cmdlet.h"
#include "tools/scriptrunner/Parser.h"

namespace scriptrunner {

std::string Parser::ParseCommandName() {
  std::string name = _cursor.TakeName();
  while (_cursor.Peek() == '-' && IsLetter(_cursor.Peek(1))) {
    _cursor.Skip(1);
    name.append("-").append(_cursor.TakeName());
  }
  return name;
}

ExpressionPtr Parser::ParseCmdletCall() {
  ExpressionPtr call = Make(ExpressionKind::Command);
  call->command = std::make_unique<Command>();
  const std::string name = ParseCommandName();
  call->command->cmdlet = FindCmdlet(name);
  if (call->command->cmdlet == nullptr) _cursor.Fail("'" + name + "' is not in the subset");
  if (!_cursor.AtStatementEnd() && _cursor.Peek() == '=') {
    _cursor.Fail("'" + name + "' is a command and cannot be assigned to");
  }
  std::vector<ExpressionPtr> unnamed;
  while (!_cursor.AtStatementEnd()) {
    if (_cursor.Peek() == '-' && IsLetter(_cursor.Peek(1))) {
      ParseNamedArgument(*call->command);
    } else {
      unnamed.push_back(ParseArgumentValue());
    }
  }
  BindUnnamed(*call->command, std::move(unnamed));
  ParseOutNull(*call->command);
  return call;
}

/// Gives the values without a name to the parameters that were not named, by position.
void Parser::BindUnnamed(Command& command, std::vector<ExpressionPtr> unnamed) {
  auto next = unnamed.begin();
  for (int position = 0; next != unnamed.end(); ++position) {
    const auto& parameters = command.cmdlet->parameters;
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const auto& each) { return each.position == position; });
    if (found == parameters.end()) {
      _cursor.Fail(std::string("too many arguments for ") + command.cmdlet->name);
    }
    const bool isNamed = command.values.contains(found->name) ||
                         (position == 0 && command.values.contains("LiteralPath"));
    if (!isNamed) Bind(command, found->name, std::move(*next++));
  }
}

void Parser::ParseNamedArgument(Command& command) {
  _cursor.Skip(1);
  const std::string written = _cursor.TakeName();
  for (const CmdletParameter& parameter : command.cmdlet->parameters) {
    if (Lower(parameter.name) != Lower(written)) continue;
    if (_cursor.Peek() == ':') _cursor.Fail("'-" + written + ":' is not in the subset");
    if (parameter.isSwitch) {
      command.switches.insert(parameter.name);
      return;
    }
    if (_cursor.AtStatementEnd()) _cursor.Fail("-" + written + " needs a value");
    return Bind(command, parameter.name, ParseArgumentValue());
  }
  _cursor.Fail(std::string(command.cmdlet->name) + " -" + written + " is not in the subset");
}

void Parser::Bind(Command& command, const std::string& parameter, ExpressionPtr value) {
  if (!command.values.emplace(parameter, std::move(value)).second) {
    _cursor.Fail("-" + parameter + " is given twice");
  }
}

ExpressionPtr Parser::ParseArgumentValue() {
  _cursor.SkipBlank();
  const char c = _cursor.Peek();
  ExpressionPtr value;
  if (c == '\'' || c == '"' || c == '(') {
    value = ParsePrimary();
  } else if (c == '$') {
    // A variable alone keeps its type; with more behind it it is a word.
    const std::size_t start = _cursor.Position();
    value = ParseVariable();
    if (_cursor.Peek() == '\\' || _cursor.Peek() == '/') {
      _cursor.ReturnTo(start);
      value = ParseBareWord();
    }
  } else {
    value = ParseBareWord();
  }
  const char next = _cursor.Peek();
  if (!_cursor.AtStatementEnd() && next != ' ' && next != '\t' && next != '\r' && next != '`') {
    _cursor.Fail(std::string("'") + next + "' is not in the subset here");
  }
  return value;
}

ExpressionPtr Parser::ParseProgramCall() {
  ExpressionPtr call = Make(ExpressionKind::Command);
  call->command = std::make_unique<Command>();
  _cursor.Skip(1);
  if (_cursor.AtStatementEnd()) _cursor.Fail("'&' needs a program");
  call->command->program = ParseArgumentValue();
  while (!_cursor.AtStatementEnd()) {
    call->command->programArguments.push_back(ParseArgumentValue());
  }
  ParseOutNull(*call->command);
  return call;
}

void Parser::ParseOutNull(Command& command) {
  if (!_cursor.TakeIf('|')) return;
  _cursor.SkipLines();
  const std::string name = ParseCommandName();
  if (Lower(name) != "out-null") _cursor.Fail("only Out-Null may stand behind '|'");
  command.discardOutput = true;
}

}  // namespace scriptrunner
