#!/bin/bash
# A full disk during `dataprep prepare`: the run fails, says "No space left on
# device" with the file, commits no empty or partial CTG file and leaves no
# work file behind; a rerun with room writes every CTG file, byte for byte as
# a run that never lacked room.
#
# The disk is a small tmpfs mounted in a private mount namespace; where the
# machine allows no such mount, a file-size limit makes every write fail
# instead (the system's reason is then "File too large").
# FULL_DISK_BY_FILE_LIMIT=1 chooses the file-size limit.
#
# usage: full-disk.sh <dataprep> <work folder>
set -u
dataprep=$1
work=$2

fail() { echo "FAIL: $*" >&2; exit 1; }

rm -rf "$work" && mkdir -p "$work" || fail "cannot make $work"
"$dataprep" simulate "$work/flight" --preset tiny --json >/dev/null || fail "simulate failed"
cp -r "$work/flight" "$work/reference"
"$dataprep" prepare "$work/reference" --json >/dev/null || fail "prepare of the untouched flight failed"
ctgs=$(cd "$work/reference/raw" && ls *.ctg) || fail "the untouched flight has no CTG files"
[ -n "$ctgs" ] || fail "the untouched flight has no CTG files"

# What a failed run must leave: each CTG file whole (as the untouched run's)
# or not there, at least one not there, no work file, and an error naming a
# CTG file with the system's reason.
check_failed_run() { # <session> <exit code> <JSON report> <reason>
    local session=$1 code=$2 err=$3 reason=$4 missing=0
    [ "$code" -eq 1 ] || fail "a run without room exited with $code (report: $(cat "$err"))"
    grep -q "\.ctg ($reason)" "$err" || fail "no error names a CTG file with \"$reason\": $(cat "$err")"
    for ctg in $ctgs; do
        if [ -e "$session/raw/$ctg" ]; then
            cmp -s "$session/raw/$ctg" "$work/reference/raw/$ctg" || fail "a run without room committed a partial $ctg"
        else
            missing=$((missing + 1))
        fi
    done
    [ "$missing" -gt 0 ] || fail "a run without room wrote every CTG file"
    local left
    left=$(cd "$session/raw" && ls -A | grep -E '\.part$')
    [ -z "$left" ] || fail "a run without room left work files: $left"
}

# A rerun with room repairs everything.
check_repaired() { # <session>
    local session=$1
    "$dataprep" prepare "$session" --json >"$work/rerun.json" 2>"$work/rerun.err" \
        || fail "the rerun with room failed: $(cat "$work/rerun.err")"
    for ctg in $ctgs; do
        cmp -s "$session/raw/$ctg" "$work/reference/raw/$ctg" || fail "$ctg differs from the untouched run's"
    done
}

if [ -z "${FULL_DISK_BY_FILE_LIMIT:-}" ] && unshare -rm true 2>/dev/null; then
    # Inside the namespace: a disk with the flight on it and <free> KiB left,
    # for several amounts of room (none; one page, which one CTG file fits).
    cat >"$work/inside.sh" <<'EOF'
set -u
dataprep=$1 work=$2 free=$3
disk=$work/disk
mkdir -p "$disk"
mount -t tmpfs -o size=8m tmpfs "$disk" || exit 77
cp -r "$work/flight" "$disk/session"
# Fill the disk, then give back what the run may use.
dd if=/dev/zero of="$disk/filler" bs=4k 2>/dev/null
[ "$free" -gt 0 ] && truncate -s "-$((free * 1024))" "$disk/filler"
"$dataprep" prepare "$disk/session" --json >"$work/full.json" 2>"$work/full.err"
echo $? >"$work/full.code"
mkdir -p "$work/after"
rm -rf "$work/after/session"
cp -r "$disk/session" "$work/after/session"
EOF
    for free in 0 4; do
        unshare -rm bash "$work/inside.sh" "$dataprep" "$work" "$free"
        status=$?
        [ "$status" -eq 77 ] && { echo "no tmpfs mount possible"; exit 77; }
        check_failed_run "$work/after/session" "$(cat "$work/full.code")" "$work/full.json" "No space left on device"
        check_repaired "$work/after/session"
    done
    echo "full tmpfs at 0 and 4 KiB of room: nothing partial committed, the rerun repaired every CTG file"
else
    cp -r "$work/flight" "$work/limited"
    # 512-byte blocks: a CTG file of a tiny band does not fit.
    # The limit is the program's alone: its report goes through a pipe.
    (ulimit -f 1 && trap '' XFSZ && exec "$dataprep" prepare "$work/limited" --json 2>"$work/full.err") \
        | cat >"$work/full.json"
    check_failed_run "$work/limited" "${PIPESTATUS[0]}" "$work/full.json" "File too large"
    check_repaired "$work/limited"
    echo "file-size limit: nothing partial committed, the rerun repaired every CTG file"
fi
