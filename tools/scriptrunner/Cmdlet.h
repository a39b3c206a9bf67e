#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/scriptrunner/Value.h"

namespace scriptrunner {

class System;

/// The values of one call, by the declared names of the parameters.
class Arguments {
 public:
  Arguments(std::map<std::string, Value> values, std::set<std::string> switches)
      : _values(std::move(values)), _switches(std::move(switches)) {}

  bool Has(const std::string& name) const { return _values.contains(name); }
  bool IsOn(const std::string& name) const { return _switches.contains(name); }
  /// @return the value; nothing when the parameter was not given.
  Value Get(const std::string& name) const;
  /// @return a text that is not empty; throws CommandFailure when there is none.
  std::string Text(const std::string& name) const;

 private:
  std::map<std::string, Value> _values;
  std::set<std::string> _switches;
};

struct CmdletParameter {
  const char* name;
  int position = Named;  ///< among the values that are given without a name
  bool isSwitch = false;

  static constexpr int Named = -1;
};

struct Cmdlet {
  const char* name;
  std::vector<CmdletParameter> parameters;
  /// Does it. Throws CommandFailure when that fails, ScriptError when it is outside the subset.
  Value (*run)(const Arguments& arguments, System& system);
};

/// @return the cmdlet of this name in any case, null when the subset has none.
const Cmdlet* FindCmdlet(std::string_view name);

}  // namespace scriptrunner
