#include "tools/scriptrunner/Evaluator.h"

#include <filesystem>

#include "tools/scriptrunner/Cmdlet.h"
#include "tools/scriptrunner/Errors.h"
#include "tools/scriptrunner/System.h"

namespace scriptrunner {

namespace {

constexpr const char* ErrorPreference = "erroractionpreference";

Value ConvertTo(const ScriptParameter& parameter, const std::string& text) {
  if (parameter.type != ParameterType::Integer) return text;
  const std::optional<long long> number = ToInteger(text);
  if (!number) throw CommandFailure("-" + parameter.name + " is no whole number: '" + text + "'");
  return *number;
}

const ScriptParameter& FindNamed(const Script& script, const std::string& name) {
  for (const ScriptParameter& parameter : script.parameters) {
    if (parameter.name == Lower(name)) return parameter;
  }
  throw ScriptError(1, "the script has no parameter -" + name);
}

bool IsName(const std::string& argument) {
  return argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9');
}

}  // namespace

Evaluator::Evaluator(System& system, std::string folder)
    : _system(system),
      _variables{{"psscriptroot", std::move(folder)},
                 {"true", true},
                 {"false", false},
                 {"null", {}},
                 {"lastexitcode", {}},
                 {ErrorPreference, {}}} {}

int Evaluator::Run(const Script& script, const std::vector<std::string>& arguments) {
  // Without a param block, arguments reach a script as $args, which the subset lacks.
  if (script.hasParamBlock) BindParameters(script, arguments);
  return RunBlock(script.body).value_or(0);
}

void Evaluator::BindParameters(const Script& script, const std::vector<std::string>& arguments) {
  std::vector<std::string> unnamed;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (!IsName(*argument)) {
      unnamed.push_back(*argument);
      continue;
    }
    const ScriptParameter& parameter = FindNamed(script, argument->substr(1));
    if (parameter.type == ParameterType::Switch) {
      _variables[parameter.name] = true;
    } else if (++argument != arguments.end()) {
      _variables[parameter.name] = ConvertTo(parameter, *argument);
    } else {
      throw CommandFailure("-" + parameter.name + " needs a value");
    }
  }
  auto next = unnamed.begin();
  for (const ScriptParameter& parameter : script.parameters) {
    if (next == unnamed.end()) break;
    if (parameter.type == ParameterType::Switch || _variables.contains(parameter.name)) continue;
    _variables[parameter.name] = ConvertTo(parameter, *next++);
  }
  if (next != unnamed.end()) throw ScriptError(1, "the script has no parameter for " + *next);
  BindStandards(script);
}

void Evaluator::BindStandards(const Script& script) {
  for (const ScriptParameter& parameter : script.parameters) {
    if (_variables.contains(parameter.name)) continue;
    Value& value = _variables[parameter.name];
    if (parameter.standard) {
      value = Evaluate(*parameter.standard);
    } else if (parameter.type == ParameterType::Switch) {
      value = false;
    } else if (parameter.type == ParameterType::Integer) {
      value = 0LL;
    } else {
      value = std::string();
    }
  }
}

std::optional<int> Evaluator::RunBlock(const Block& block) {
  for (const Statement& statement : block) {
    if (const std::optional<int> code = RunStatement(statement)) return code;
  }
  return {};
}

std::optional<int> Evaluator::RunStatement(const Statement& statement) {
  switch (statement.kind) {
    case StatementKind::Exit:
      return ExitCodeOf(statement);
    case StatementKind::If:
      return RunIf(statement);
    case StatementKind::Assign:
      Assign(statement);
      return {};
    default:
      Print(*statement.expression);
      return {};
  }
}

std::optional<int> Evaluator::RunIf(const Statement& statement) {
  for (const Branch& branch : statement.branches) {
    if (!branch.condition || ToBool(Evaluate(*branch.condition))) return RunBlock(branch.body);
  }
  return {};
}

int Evaluator::ExitCodeOf(const Statement& statement) {
  if (!statement.expression) return 0;
  const std::optional<long long> code = ToInteger(Evaluate(*statement.expression));
  if (!code || *code != static_cast<int>(*code)) {
    throw ScriptError(statement.line, "exit needs a whole number of 32 bits");
  }
  return static_cast<int>(*code);
}

void Evaluator::Assign(const Statement& statement) {
  Value value = Evaluate(*statement.expression);
  if (statement.variable == ErrorPreference && Lower(ToText(value)) != "stop") {
    throw ScriptError(statement.line, "$ErrorActionPreference can only be 'Stop' in the subset");
  }
  _variables[statement.variable] = std::move(value);
}

void Evaluator::Print(const Expression& expression) {
  const Value value = Evaluate(expression);
  const bool isDiscarded = expression.command && expression.command->discardOutput;
  if (isDiscarded || std::holds_alternative<std::monostate>(value)) return;
  _system.Write(ToText(value));
}

Value Evaluator::Evaluate(const Expression& expression) {
  const auto part = [&](std::size_t i) { return Evaluate(*expression.parts[i]); };
  switch (expression.kind) {
    case ExpressionKind::Literal:
      return expression.value;
    case ExpressionKind::Variable:
      return Lookup(expression);
    case ExpressionKind::Not:
      return !ToBool(part(0));
    case ExpressionKind::Equal:
      return AreEqual(part(0), part(1));
    case ExpressionKind::NotEqual:
      return !AreEqual(part(0), part(1));
    case ExpressionKind::And:
      return ToBool(part(0)) && ToBool(part(1));
    case ExpressionKind::Or:
      return ToBool(part(0)) || ToBool(part(1));
    case ExpressionKind::Command:
      return RunCommand(expression);
    case ExpressionKind::Text:
      break;
  }
  std::string text;
  for (std::size_t i = 0; i < expression.parts.size(); ++i) text += ToText(part(i));
  return text;
}

Value Evaluator::Lookup(const Expression& variable) {
  if (variable.name.starts_with("env:")) {
    const std::optional<std::string> text = _system.Environment(variable.name.substr(4));
    return text ? Value(*text) : Value();
  }
  const auto found = _variables.find(variable.name);
  if (found == _variables.end()) {
    throw ScriptError(variable.line, "$" + variable.name + " was never set");
  }
  return found->second;
}

Value Evaluator::RunCommand(const Expression& call) try {
  if (call.command->cmdlet != nullptr) return RunCmdlet(call);
  RunProgram(*call.command);
  return {};
} catch (const ScriptError& error) {
  throw ScriptError(error.Line() != 0 ? error.Line() : call.line, error.what());
}

Value Evaluator::RunCmdlet(const Expression& call) {
  std::map<std::string, Value> values;
  for (const auto& [name, value] : call.command->values) values[name] = Evaluate(*value);
  const Arguments arguments(std::move(values), call.command->switches);
  const std::string action = Lower(ToText(arguments.Get("ErrorAction")));
  const bool isTolerated = action == "silentlycontinue" || action == "ignore";
  if (!action.empty() && action != "stop" && !isTolerated) {
    throw ScriptError(call.line, "-ErrorAction " + action + " is not in the subset");
  }
  std::string text = std::string(call.command->cmdlet->name) + ": ";
  try {
    return call.command->cmdlet->run(arguments, _system);
  } catch (const CommandFailure& failure) {
    if (isTolerated) return {};
    text += failure.what();
  } catch (const std::filesystem::filesystem_error& failure) {
    if (isTolerated) return {};
    text += failure.what();
  }
  const bool stops = action == "stop" || ToBool(_variables[ErrorPreference]);
  if (!stops) text += " (PowerShell would go on: set $ErrorActionPreference = 'Stop')";
  throw CommandFailure("line " + std::to_string(call.line) + ": " + text);
}

void Evaluator::RunProgram(const Command& command) {
  const std::string program = ToText(Evaluate(*command.program));
  std::vector<std::string> arguments;
  for (const ExpressionPtr& argument : command.programArguments) {
    arguments.push_back(ToText(Evaluate(*argument)));
  }
  const int code = _system.RunProgram(program, arguments, command.discardOutput);
  _variables["lastexitcode"] = static_cast<long long>(code);
}

}  // namespace scriptrunner
