#!/usr/bin/env bash
# Applies each fault of mutations.txt in turn, rebuilds only the suites meant
# to catch it, and reports whether they did. Usage: BUILD=build run.sh [ids]
set -u
cd "$(dirname "$0")/../.."
BUILD=${BUILD:-build}
LIST=tests/mutations/mutations.txt
export QT_QPA_PLATFORM=offscreen
caught=0 survived=0 invalid=0 table=() built=()
backup=$(mktemp) log=$(mktemp) current=""
# Content is copied back rather than the file moved, so its time is new and
# ninja rebuilds everything that was compiled from the mutated text.
restore() { [ -n "$current" ] && cat "$backup" >"$current"; current=""; }
trap 'restore; rm -f "$backup" "$log"; exit 130' INT TERM
trap 'restore; rm -f "$backup" "$log"' EXIT

targets_for() { # test targets whose ctest names match; the ctl suites run the built tool
    local paths
    paths=$(find tests -name 'tst_*.cpp' | sed 's|^tests/||; s|\.cpp$||' | grep -E -- "$1")
    sed 's|.*/||' <<<"$paths" | grep .
    grep -q '^ctl/' <<<"$paths" && echo norvikctl
}

while IFS=$'\t' read -r id file orig repl regex what; do
    case "$id" in ''|'#'*) continue ;; esac
    if [ $# -gt 0 ]; then printf '%s\n' "$@" | grep -qxF -- "$id" || continue
    else case "$id" in gap-*) continue ;; esac; fi
    n=$(python3 -c 'import sys; print(open(sys.argv[1]).read().count(sys.argv[2]))' "$file" "$orig")
    if [ "$n" != 1 ]; then
        table+=("$id|INVALID|original found $n times in $file"); invalid=$((invalid + 1)); continue
    fi
    cp "$file" "$backup"; current=$file
    python3 -c 'import sys; p, a, b = sys.argv[1:]; s = open(p).read(); open(p, "w").write(s.replace(a, b))' \
        "$file" "$orig" "$repl"
    mapfile -t targets < <(targets_for "$regex" | sort -u)
    if [ ${#targets[@]} -eq 0 ]; then
        restore; table+=("$id|INVALID|no test matches $regex"); invalid=$((invalid + 1)); continue
    fi
    built+=("${targets[@]}")
    echo "== $id: $what" >&2
    if ! cmake --build "$BUILD" --target "${targets[@]}" >"$log" 2>&1; then
        restore
        table+=("$id|INVALID|build broke: $(grep -m1 'error:' "$log" | cut -c1-120)"); invalid=$((invalid + 1)); continue
    fi
    ctest --test-dir "$BUILD" -R "$regex" --output-on-failure >"$log" 2>&1
    rc=$?
    restore
    if [ $rc -ne 0 ]; then
        fails=$(grep -oP '^FAIL!  : \K[^ ]+' "$log" | sed 's/(.*//' | sort -u | paste -sd, -)
        [ -n "$fails" ] || fails="crash/timeout: $(grep -oP 'Test +#\d+: \K\S+(?= .*\*\*\*)' "$log" | paste -sd, -)"
        table+=("$id|caught|$fails"); caught=$((caught + 1))
    else
        table+=("$id|SURVIVED|$regex"); survived=$((survived + 1))
    fi
done <"$LIST"

# Leave no test binary built from a mutated source behind.
[ ${#built[@]} -gt 0 ] && cmake --build "$BUILD" --target $(printf '%s\n' "${built[@]}" | sort -u) >/dev/null 2>&1
printf '%s\n' "${table[@]}" | column -t -s '|'
echo "$caught caught, $survived survived, $invalid invalid (${SECONDS}s)"
[ $survived -eq 0 ] && [ $invalid -eq 0 ]
