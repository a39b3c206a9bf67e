#!/usr/bin/env bash
# What cmake --install lays out, as a zip in build/package.
source scripts/common.sh
bash scripts/deps.sh
bash scripts/build.sh product
rm -rf "$BUILD/package"
step "package" "$BUILD/log/package.log" cpack --config "$BUILD/windows/CPackConfig.cmake" -B "$BUILD/package"
rm -rf "$BUILD/package/_CPack_Packages"
ls -s --block-size=KiB "$BUILD/package"/*.zip
