#!/usr/bin/env bash
# Compiles the agent for Windows and runs the tests of its pure parts natively.
set -eu
missing=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' g++-mingw-w64-x86-64-posix g++ libjsoncpp-dev libgtest-dev 2>/dev/null | grep -c '^ii' || true)
if [ "$missing" -ne 4 ]; then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    g++-mingw-w64-x86-64-posix g++ libjsoncpp-dev libgtest-dev
fi
mkdir -p build/include
ln -sfn /usr/include/jsoncpp/json build/include/json
failed=0
for source in agent/*.cpp catalogue/*.cpp install/*.cpp progress/*.cpp service/*.cpp; do
  x86_64-w64-mingw32-g++-posix -std=c++20 -Wall -Wextra -Wshadow -Wconversion -Werror -I. \
    -Ibuild/include '-DTOLMAR_API=__declspec(dllexport)' -fsyntax-only "$source" || failed=1
done
g++ -std=c++20 -Wall -Wextra -fsanitize=address,undefined -I. -DTOLMAR_API= tests/unit/PureTest.cpp \
  service/RequestBody.cpp catalogue/*.cpp -lgtest -lgtest_main -o build/pure_tests
build/pure_tests --gtest_brief=1 | tee build/pure_tests.log || failed=1
passed=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) .*/\1/p' build/pure_tests.log)
echo "${passed:-0} passed, $failed failed"
exit "$failed"
