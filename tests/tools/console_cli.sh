#!/bin/sh
# zrad serve and zrad console across processes, over 127.0.0.1 only; every wait is bounded.
# Usage: console_cli.sh PATH/TO/zrad
here=$(cd "$(dirname "$0")" && pwd)
. "$here/cli.sh"
. "$here/serve_lib.sh"

serve_at "$dir/srv" "$dir/serve.log"
check "serve reports its port" test -n "$port"
head -c 300001 /dev/urandom > "$dir/cli/up.bin"
printf 'hello\nMD sub\nLS\nUP %s\nDOWN up.bin\nFIND *.bin\nR sub\nLS -l\n' "$dir/cli/up.bin" |
  console "127.0.0.1:$port" > "$dir/out"
check "piped session exits 0" test $? -eq 0
check "HELLO answered" grep -qx '欢迎连接 本机' "$dir/out"
check "MD made the directory" grep -qx '新建成功！' "$dir/out"
check "LS lists dot entries and the new directory" sh -c "grep -qx '\.\.' '$dir/out' && grep -qx sub '$dir/out'"
check "UP answered" grep -qx '上传成功！' "$dir/out"
check "uploaded file intact" cmp -s "$dir/cli/up.bin" "$dir/srv/up.bin"
check "DOWN stored under a free name" grep -qx "已下载到：$dir/cli/up-副本.bin" "$dir/out"
check "downloaded file intact" cmp -s "$dir/cli/up.bin" "$dir/cli/up-副本.bin"
check "FIND answered" grep -qx 'up.bin;' "$dir/out"
check "R removed the directory" sh -c "grep -qx '删除成功！' '$dir/out' && test ! -e '$dir/srv/sub'"
check "LS -l has long lines" grep -q '^up.bin  *||  *300001 Byte  ||' "$dir/out"
check "serve logged the connection" grep -q 'connection from 127\.0\.0\.1:[0-9]* opened' "$dir/serve.log"
check "serve logged the commands" grep -q 'command UP' "$dir/serve.log"
check "a client leaving is no error" sh -c "! grep -q 'error' '$dir/serve.log'"

echo HELP | console "127.0.0.1:$port" > "$dir/out"
check "HELP shows 21 lines, HELLO first" sh -c \
  "test \$(wc -l < '$dir/out') -eq 21 && head -n1 '$dir/out' | grep -qx 'HELLO     给服务器一个回响。'"

# Lines the console refuses: each is reported on stderr, the rest still run, the run fails.
echo x > "$dir/cli/with space.txt"
printf '%s\n' 'RN a b c' 'UP "x' '!ls' 'NOSUCH' "up \"$dir/cli/with space.txt\"" 'UP nowhere.bin' \
  'DOWN nowhere.bin' | console "127.0.0.1:$port" > "$dir/out" 2> "$dir/err"
check "refused lines fail the run with 1" test $? -eq 1
check "each refusal names its line" test "$(grep -c '^zrad console: line [1-4]: ' "$dir/err")" -eq 4
check "a quoted argument keeps its blank" cmp -s "$dir/cli/with space.txt" "$dir/srv/with space.txt"
check "missing files on either side are answered" test "$(grep -cx '此文件（夹）不存在！' "$dir/out")" -eq 2

{ echo HELLO; sleep 2; echo HELLO; } | console "127.0.0.1:$port" > /dev/null 2>&1 &
client=$!
sleep 1
kill -TERM "$pid"
check "serve stops on SIGTERM" stops "$pid"
wait "$pid"
check "serve exits 0" test $? -eq 0
check "serve logged its stop" grep -q 'stopped' "$dir/serve.log"
wait "$client"
check "a broken connection fails the console with 1" test $? -eq 1

echo HELLO | console "127.0.0.1:$port" > /dev/null 2>&1
check "nothing listening fails with 1" test $? -eq 1

# A peer that accepts and never answers: the wait for the answer ends after --timeout.
for port in $((port + 1)) $((port + 2)) $((port + 3)); do
  nc -l 127.0.0.1 "$port" > /dev/null 2>&1 &
  silent=$!; pids="$pids $silent"
  sleep 0.3
  kill -0 "$silent" 2> /dev/null && break
done
echo HELLO | (cd "$dir/cli" && timeout 30 "$zrad" console --timeout 1 "127.0.0.1:$port") \
  > /dev/null 2> "$dir/err"
check "no answer in time fails with 1" sh -c "test $? -eq 1 && grep -q 'no answer to HELLO' '$dir/err'"

(cd "$dir/loc" && printf 'MD made\nLS\n' | timeout 30 "$zrad" console --local > "$dir/out")
check "--local exits 0" test $? -eq 0
check "--local works in the current directory" sh -c "test -d '$dir/loc/made' && grep -qx made '$dir/out'"
# The console's own service sees its peer leave when the console ends: no news to the user.
for input in '' 'HELLO\n' 'NOSUCH\n' '' 'HELLO\n' 'NOSUCH\n'; do
  printf "$input" | timeout 30 "$zrad" console --local 2>&1 >/dev/null | grep -v 'line 1: unknown command'
done > "$dir/err"
check "--local ends without library errors" test ! -s "$dir/err"

# The opt-in protections: a pass phrase, and a root the file commands cannot leave.
mkdir "$dir/root" && echo secret > "$dir/outside.txt" && echo sesame > "$dir/pass"
serve_at "$dir/loc" "$dir/guard.log" --pass-file "$dir/pass" --root "$dir/root"
check "a protected service starts" test -n "$port"
echo LS | console "127.0.0.1:$port" > "$dir/out"
check "without the phrase commands are refused" grep -qx '请先验证！' "$dir/out"
printf 'MD made\nDOWN ../outside.txt\nDOWN /etc/hostname\n' |
  console --pass-file "$dir/pass" "127.0.0.1:$port" > "$dir/out"
check "with the phrase commands run beneath the root" test -d "$dir/root/made"
check "the root cannot be left" sh -c "test \$(grep -cx '此文件（夹）不存在！' '$dir/out') -eq 2 && test ! -e '$dir/cli/outside-副本.txt'"
kill -TERM "$pid"
check "a protected service stops on SIGTERM" stops "$pid"
finish
