#!/usr/bin/env bash
# How a fleet of services polls: ./dev bench polls [OPTION…] (--help lists them). Prints a table and draws a picture.
exec bash bench/common/simulate.sh polls "$@"
