#!/usr/bin/env bash
# Applies each fault of mutations.txt in turn, rebuilds only the suites meant
# to catch it, and reports whether they did. Usage: BUILD=build run.sh [ids]
set -u
cd "$(dirname "$0")/../.."
BUILD=${BUILD:-build}
LIST=tests/mutations/mutations.txt
export QT_QPA_PLATFORM=offscreen
caught=0 survived=0 invalid=0 table=()
backup=$(mktemp) log=$(mktemp) known=$(mktemp) current=""
# Content is copied back rather than the file moved, so its time is new and
# ninja rebuilds everything that was compiled from the mutated text.
restore() { [ -n "$current" ] && cat "$backup" >"$current"; current=""; }
trap 'restore; rm -f "$backup" "$log" "$known"; exit 130' INT TERM
trap 'restore; rm -f "$backup" "$log" "$known"' EXIT

targets_for() { # test targets whose ctest names match; the ctl suites run the built tool
    local paths
    paths=$(find tests -name 'tst_*.cpp' | sed 's|^tests/||; s|\.cpp$||' | grep -E -- "$1")
    sed 's|.*/||' <<<"$paths" | grep .
    grep -q '^ctl/' <<<"$paths" && echo norvikctl
}
failures() { grep -oP '^FAIL!  : \K[^ ]+' "$1" | sed 's/(.*//' | sort -u; }
broken() { grep -oP 'Test +#\d+: \K\S+ +\.*\*\*\*\w+' "$1" | sed 's/ .*\*\*\*/:/' | sort -u; }
build() {
    local targets
    mapfile -t targets < <(targets_for "$1" | sort -u)
    [ ${#targets[@]} -gt 0 ] || { echo "error: no test matches $1" >"$log"; return 2; }
    cmake --build "$BUILD" --target "${targets[@]}" >"$log" 2>&1 || return 2
}
build_and_test() { # regex; leaves ctest's output in $log
    build "$1" || return 2
    ctest --test-dir "$BUILD" -R "$1" --output-on-failure >"$log" 2>&1 || return 1
}

records=()
while IFS= read -r line; do
    id=${line%%$'\t'*}
    case "$id" in ''|'#'*) continue ;; esac
    if [ $# -gt 0 ]; then printf '%s\n' "$@" | grep -qxF -- "$id" || continue
    else case "$id" in gap-*) continue ;; esac; fi
    records+=("$line")
done <"$LIST"
[ ${#records[@]} -gt 0 ] || { echo "no mutation selected" >&2; exit 2; }

# What fails with no fault applied is not evidence of catching one.
all=$(printf '%s\n' "${records[@]}" | cut -f5 | paste -sd'|')
build_and_test "$all"
[ $? -eq 2 ] && { cat "$log"; echo "the suites do not build unmutated" >&2; exit 2; }
{ failures "$log"; broken "$log"; } >"$known"
[ -s "$known" ] && echo "Failing without any fault, not counted: $(paste -sd' ' "$known")"

for line in "${records[@]}"; do
    IFS=$'\t' read -r id file orig repl regex what <<<"$line"
    echo "== $id: $what" >&2
    n=$(python3 -c 'import sys; print(open(sys.argv[1]).read().count(sys.argv[2]))' "$file" "$orig")
    if [ "$n" != 1 ]; then
        table+=("$id	INVALID	original found $n times in $file"); invalid=$((invalid + 1)); continue
    fi
    cp "$file" "$backup"; current=$file
    python3 -c 'import sys; p, a, b = sys.argv[1:]; s = open(p).read(); open(p, "w").write(s.replace(a, b))' \
        "$file" "$orig" "$repl"
    build_and_test "$regex"; rc=$?
    restore
    fns=$(failures "$log" | grep -vxFf "$known" | paste -sd, -)
    bad=$(broken "$log" | grep -vxFf "$known" | paste -sd, -)
    if [ $rc -eq 2 ]; then
        table+=("$id	INVALID	does not build: $(grep -m1 'error' "$log" | cut -c1-100)"); invalid=$((invalid + 1))
    elif [ -n "$fns$bad" ]; then
        table+=("$id	caught	${fns:-$bad}"); caught=$((caught + 1))
    else
        table+=("$id	SURVIVED	$regex"); survived=$((survived + 1))
    fi
done

# Leave no test binary built from a mutated source behind.
build "$all"
printf '%s\n' "${table[@]}" | column -t -s $'\t'
echo "$caught caught, $survived survived, $invalid invalid (${SECONDS}s)"
[ $survived -eq 0 ] && [ $invalid -eq 0 ]
