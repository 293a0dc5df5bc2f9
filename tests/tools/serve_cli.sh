#!/bin/sh
# zrad serve under faults, over 127.0.0.1 only: SIGPIPE and a log reader that goes away, a
# file-size limit reached by an upload, and a peer that stops reading. Every wait is bounded.
# Usage: serve_cli.sh PATH/TO/zrad
here=$(cd "$(dirname "$0")" && pwd)
. "$here/cli.sh"
. "$here/serve_lib.sh"
head -c 1000000 /dev/urandom > "$dir/cli/big.bin"
head -c 40000000 /dev/zero > "$dir/srv/huge.bin"

# The log goes to a reader that leaves after the first line; then SIGPIPE comes by itself too.
mkfifo "$dir/log.fifo"
(cd "$dir/srv" && exec "$zrad" serve --port 0 2> "$dir/log.fifo") &
pid=$!; pids="$pids $pid"
port=$(timeout 10 head -n 1 "$dir/log.fifo" | sed -n 's/.*listening on 127\.0\.0\.1:\([0-9]*\).*/\1/p')
check "serve reports its port to the first reader" test -n "$port"
kill -PIPE "$pid"
echo HELLO | console "127.0.0.1:$port" > "$dir/out"
check "serve survives SIGPIPE and a log nobody reads" grep -qx '欢迎连接 本机' "$dir/out"
kill -TERM "$pid"
check "it still stops on SIGTERM" stops "$pid"

# Files no larger than 100 KiB: the upload of 1 MB is refused with an answer, leaves no part of
# itself anywhere, and the file of that name already there stays as it was.
echo earlier > "$dir/srv/big.bin"
fsize=200 serve_at "$dir/srv" "$dir/limit.log"
printf 'UP %s\nHELLO\n' "$dir/cli/big.bin" | console "127.0.0.1:$port" > "$dir/out"
check "the failed upload is answered" grep -qx '上传失败！' "$dir/out"
check "the connection goes on serving" grep -qx '欢迎连接 本机' "$dir/out"
check "the earlier file is intact" test "$(cat "$dir/srv/big.bin")" = earlier
check "no partial file is left" sh -c "test \$(ls '$dir/srv' | wc -l) -eq 2"
check "serve outlives the limit" kill -0 "$pid"
kill -TERM "$pid"

# A peer asks for 40 MB and never reads: the others are served meanwhile, and its connection
# ends once the transfer has been stuck for the time-out (5 s).
serve_at "$dir/srv" "$dir/stuck.log"
# DOWN huge.bin: frame header (60-byte payload, no file), message header, three strings.
down='\074\0\0\0\0\0\0\0\001\0\0\0\001\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'
down="$down"'\004\0\0\0D\0O\0W\0N\0\010\0\0\0h\0u\0g\0e\0.\0b\0i\0n\0\0\0\0\0'
# nc stops reading once its pipe to `sleep` is full. The pipeline lives 20 s, so a close seen
# within about 10 s is the service's doing.
({ printf "$down"; sleep 20; } | timeout 20 nc 127.0.0.1 "$port" | sleep 20) > /dev/null 2>&1 &
sleep 1
echo HELLO | (cd "$dir/cli" && timeout 10 "$zrad" console --timeout 2 "127.0.0.1:$port") > "$dir/out"
check "another client is answered meanwhile" grep -qx '欢迎连接 本机' "$dir/out"
closed() { test "$(grep -c 'closed' "$dir/stuck.log")" -eq 2; }
for _ in $(seq 80); do closed && break; sleep 0.1; done
check "the stuck connection ends by time-out" closed
kill -TERM "$pid"
check "serve stops on SIGTERM" stops "$pid"
finish
