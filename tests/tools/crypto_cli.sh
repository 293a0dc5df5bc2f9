#!/bin/sh
# zrad md5, base64 and des: one case a line (see cli.sh), checked against coreutils.
# Usage: crypto_cli.sh PATH/TO/zrad
. "$(dirname "$0")/cli.sh"
head -c 100003 /dev/urandom > rand
printf 'abc' > abc
printf '' > empty
mkdir sub
sum_rand=$(md5sum < rand | cut -c1-32)
b64_rand=$(base64 -w0 rand)

# md5: md5sum's lines for one or many files and for standard input; -c checks them.
expect 0 "$sum_rand  rand\n" '' md5 rand
expect 0 "900150983cd24fb0d6963f7d28e17f72  abc\nd41d8cd98f00b204e9800998ecf8427e  empty\n" '' md5 abc empty
expect 0 '3CD24FB0D6963F7D  abc\n' '' md5 --short --upper abc
in=abc
expect 0 '900150983cd24fb0d6963f7d28e17f72  -\n' '' md5
expect 0 '900150983cd24fb0d6963f7d28e17f72  -\n' '' md5 -
in=/dev/null
expect 1 "$sum_rand  rand\n" 'zrad md5: missing: No such file or directory' md5 missing rand
md5sum rand abc > sums
expect 0 'rand: OK\nabc: OK\n' '' md5 -c sums
printf 'x' >> abc
expect 1 'rand: OK\nabc: FAILED\n' 'zrad md5: WARNING: 1 computed checksum(s) did NOT match' md5 --check sums
expect 1 '' 'zrad md5: sub: Is a directory' md5 sub
expect 1 '' 'zrad md5: empty: no "DIGEST  NAME" lines found' md5 -c empty

# base64: coreutils' text both ways; invalid input is refused whole unless --lenient.
expect 0 "$b64_rand\n" '' base64 rand
base64 rand > wrapped
check "base64 -d reverses wrapped text" sh -c "'$zrad' base64 -d wrapped | cmp -s - rand"
printf 'a!!b' > bang
printf '====' > pads
printf 'TWFu\nTQ==\n' > good
expect 1 '' 'zrad base64: invalid input in bang: a character outside the Base64 alphabet' base64 -d bang
expect 1 '' 'zrad base64: invalid input in pads: too much "=" padding' base64 -d pads
printf 'TQ==TWFu' > inner
expect 0 'ManM' '' base64 -d good
in=inner
expect 1 '' 'zrad base64: invalid input in standard input: "=" before the end' base64 -d -
in=good
expect 0 'ManM' '' base64 --decode
in=/dev/null
expect 0 'h\0000\0033' '' base64 -d --lenient bang

# des: a round trip, and a truncated message fails without leaving an output.
expect 0 '' '' des encrypt --pass secret rand sealed
expect 0 '' '' des decrypt --pass=secret sealed out
check "des round trip" cmp -s rand out
head -c 100 sealed > short
expect 1 '' 'zrad des: short is not an encrypted message: its length prefix does not match its size' des decrypt --pass secret short never
check "no output left after a failure" test ! -e never
expect 2 '' 'zrad des: --pass is required
usage: zrad des *' des encrypt rand out
finish
