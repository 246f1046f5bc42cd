#!/usr/bin/env bash
# check_tools.sh linux|win32: runs the tools on good and on damaged files.
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
. scripts/wine.sh

target=${1:?usage: check_tools.sh linux|win32}
top=$PWD
# Under Wine only what lies below the checkout is seen under the same path.
work=$top/build/tools-$target
rm -rf "$work"
mkdir -p "$work"
cd "$work" || exit 1
status=0

fail() {
    echo "   $*"
    status=1
}

tool() { # NAME ARGUMENT...
    local name=$1
    shift
    if [ "$target" = linux ]; then
        "$top/build/linux-release/bin/$name" "$@"
    else
        wine32 "$top/build/win32/bin/$name.exe" "$@"
    fi
}

# expect CODE NAME ARGUMENT...: and one line of error, no less and no more, for code 1.
expect() {
    local wanted=$1 code
    shift
    tool "$@" >out 2>err
    code=$?
    [ $code = "$wanted" ] || fail "$*: exit code $code instead of $wanted: $(head -c 300 err)"
    [ "$wanted" != 1 ] || [ "$(wc -l <err)" = 1 ] || fail "$*: not one line of error: $(cat err)"
    [ "$wanted" != 0 ] || [ ! -s err ] || fail "$*: $(cat err)"
}

check_help() { # NAME
    expect 0 "$1" --help
    grep -q "Exit status" out || fail "$1 --help does not tell the exit status"
    expect 2 "$1"
}

check_pres() {
    check_help pres
    seq -f 'Window %g { }' 500 >plain.rc
    expect 0 pres pack plain.rc packed.rc
    [ "$(head -c 4 packed.rc)" = PRES ] || fail "pres: the file does not begin with PRES"
    [ "$(stat -c %s packed.rc)" -lt "$(($(stat -c %s plain.rc) / 3))" ] || fail "pres: the file has hardly shrunk"
    expect 0 pres unpack packed.rc back.rc
    cmp plain.rc back.rc || fail "pres: unpacked differently"
    cp back.rc kept.rc
    printf x | cat packed.rc - >long.rc
    head -c 100 packed.rc >short.rc
    : >empty.rc
    for bad in long short empty plain missing; do
        expect 1 pres unpack $bad.rc kept.rc
    done
    cmp plain.rc kept.rc || fail "pres: a failure touched the old file"
    expect 1 pres pack empty.rc kept.rc
}

check_tvpack() {
    local n size
    check_help tvpack
    mkdir -p in/dir/deep in/empty
    for n in $(seq 1000); do
        size=$((n * 37 % 9000))
        case $((n % 4)) in
        0) head -c $size /dev/urandom >"in/file$n.bin" ;;
        1) yes "line $n" | head -c $size >"in/dir/file$n.txt" ;;
        2) head -c $size /dev/zero >"in/dir/deep/file$n.JPG" ;;
        3) seq $n $((n + size / 8)) >"in/file $n" ;;
        esac
    done
    : >in/nothing
    expect 0 tvpack create all.arc -C in .
    expect 0 tvpack list all.arc
    [ "$(tail -n 1 out | tr -d '\r' | awk '{print $3}')" = 1001 ] || fail "tvpack list: $(tail -n 1 out)"
    expect 0 tvpack extract all.arc --to out-dry --dry-run
    [ ! -e out-dry ] || fail "tvpack: a dry run made files"
    expect 0 tvpack extract all.arc --to out-all
    rmdir in/empty
    diff -r in out-all >differences || fail "tvpack: $(head -n 3 differences)"

    for size in 5 500 50000; do
        head -c $size all.arc >cut.arc
        expect 1 tvpack extract cut.arc --to "out-$size"
    done
    [ "$(find out-50000 -type f | wc -l)" -gt 5 ] || fail "tvpack: what was good before the damage is gone"
    cp all.arc kept.arc
    expect 1 tvpack create kept.arc -C in missing
    expect 1 tvpack create kept.arc ../tools-"$target"/in
    cmp all.arc kept.arc || fail "tvpack: a failure touched the old archive"
    printf '\377\377\377\377\001\0\0\0\006\0../badX' >bad.arc
    expect 1 tvpack extract bad.arc --to out-bad
    [ ! -e bad ] && [ ! -e out-bad ] || fail "tvpack: a name led out of the directory"
}

for check in $(declare -F | sed -n 's/^declare -f \(check_\)/\1/p'); do
    [ "$check" = check_help ] || "$check"
done
cd "$top" || exit 1
[ $status != 0 ] || rm -rf "$work"
exit $status
