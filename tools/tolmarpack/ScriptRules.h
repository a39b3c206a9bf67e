#pragma once

#include "tools/tolmarpack/Rules.h"

namespace tolmarpack {

enum class ScriptKind { Installer, Check };

/// Applies the rules over scripts that need nothing but the script's text. Pure.
/// @param file in, how findings name it. @param text in, its bytes.
/// @param downloadFolder in, the devices' download folder; empty: the default one.
void LintScript(ScriptKind kind, const std::string& file, const std::string& text,
                const std::string& downloadFolder, LintReport& report);

}  // namespace tolmarpack
