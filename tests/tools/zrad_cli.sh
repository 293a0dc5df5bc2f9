#!/bin/sh
# The command line every zrad subcommand shares: version, help, usage errors, the log.
# Usage: zrad_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
printf '{"a":1}' > t.json

check "--version" sh -c "'$zrad' --version | grep -qx 'zrad [0-9][0-9.]*'"
expect 2 '' 'zrad: A subcommand is required
usage: zrad *'
expect 2 '' 'zrad: A subcommand is required
usage: zrad *' nosuch
check "help CMD prints the subcommand's help" sh -c "'$zrad' help json get | grep -q '^usage: zrad json get'"
check "--help after a subcommand too" sh -c "'$zrad' json get --help | grep -q '^usage: zrad json get'"
expect 2 '' 'zrad help: no command nosuch in zrad json
usage: zrad help *' help json nosuch
# The log goes nowhere unless asked; --log and --verbose are accepted anywhere.
expect 0 '1\n' '' json get t.json a --verbose
expect 0 '1\n' '' --log=own.log json get t.json a
check "no zrad.log is created" test ! -e zrad.log
finish
