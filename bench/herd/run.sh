#!/usr/bin/env bash
# How well retry waits spread a fleet that meets an outage: ./dev bench herd [OPTION…] (--help lists them). Prints a table
# and draws a picture.
exec bash bench/common/simulate.sh herd "$@"
