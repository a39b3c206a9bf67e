# Tools that Debian has not, from npm, in build/deps/npm. Sourced behind scripts/common.sh. The versions are the newest that
# Debian's Node.js runs.
NPM=$BUILD/deps/npm
NPM_PACKAGES=(@redocly/cli@1.34.5 playwright-core@1.52.0)
export REDOCLY_TELEMETRY=off REDOCLY_SUPPRESS_UPDATE_NOTICE=true

# PowerShell's grammar, for scripts/powershell-syntax.mjs.
GRAMMAR=$BUILD/deps/powershell-grammar
GRAMMAR_PACKAGES=(tree-sitter-powershell@0.26.4 web-tree-sitter@0.25.10)

# npm_install FOLDER PACKAGE…: installs them unless they are there. No script of a package is run.
npm_install() {
  is_stamped "$1/stamp" "${*:2}" && return 0
  rm -rf "$1"
  mkdir -p "$1"
  step "npm packages" "$BUILD/log/npm.log" npm install --prefix "$1" --no-audit --no-fund --ignore-scripts "${@:2}"
  stamp "$1/stamp" "${*:2}"
}
npm_packages() { npm_install "$NPM" "${NPM_PACKAGES[@]}"; }
npm_grammar() { npm_install "$GRAMMAR" "${GRAMMAR_PACKAGES[@]}"; }

# npm_tool PROGRAM ARGUMENT…: runs a package's program.
npm_tool() {
  npm_packages
  "$NPM/node_modules/.bin/$1" "${@:2}"
}
