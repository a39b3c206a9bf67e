# Tools that Debian has not, from npm, in build/deps/npm. Sourced behind scripts/common.sh. The versions are the newest that
# Debian's Node.js runs.
NPM=$BUILD/deps/npm
NPM_PACKAGES=(@redocly/cli@1.34.5 playwright-core@1.52.0)
export REDOCLY_TELEMETRY=off REDOCLY_SUPPRESS_UPDATE_NOTICE=true

# npm_packages: installs them unless they are there.
npm_packages() {
  is_stamped "$NPM/stamp" "${NPM_PACKAGES[*]}" && return 0
  rm -rf "$NPM"
  mkdir -p "$NPM"
  step "npm packages" "$BUILD/log/npm.log" \
    npm install --prefix "$NPM" --no-audit --no-fund --ignore-scripts "${NPM_PACKAGES[@]}"
  stamp "$NPM/stamp" "${NPM_PACKAGES[*]}"
}

# npm_tool PROGRAM ARGUMENT…: runs a package's program.
npm_tool() {
  npm_packages
  "$NPM/node_modules/.bin/$1" "${@:2}"
}
