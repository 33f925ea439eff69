#!/usr/bin/env bash
# Holds that the reference of the public headers can be made without a warning, that it has every name
# that the library exports, and that a name without words would be noticed.
#
#     reference.sh SOURCE_FOLDER WORK_FOLDER
set -euo pipefail

source=$1 work=$2

complain() {
    printf '%s\n' "$*" >&2
    exit 1
}

cd "$source"
# shellcheck source=scripts/docs.sh
source scripts/docs.sh
rm -rf "$work"
mkdir -p "$work"
asXml=('GENERATE_HTML = NO' 'GENERATE_XML = YES' 'XML_PROGRAMLISTING = NO')

# hasAllWords FOLDER [SETTING...]: whether every name has its words.
hasAllWords() {
    local folder=$1 status=0
    shift
    makeReference "$folder" "${asXml[@]}" "$@" || status=1
    awk -f tests/docs/words.awk "$folder"/xml/*.xml || status=1
    return "$status"
}

hasAllWords "$work/headers" || complain "the reference misses words"

# Every class and function that the library exports, without its parameters.
exported=$(sed -n -E '/^(typeinfo|vtable) /d; s/(\[abi:cxx11\])?\(.*//p' \
    tests/install/liborvel-analytics.symbols | sort -u)
[ "$(wc -l <<<"$exported")" -gt 20 ] || complain "the list of exported names was not read"
while read -r name; do
    grep -rqF "<qualifiedname>$name</qualifiedname>" "$work/headers/xml" ||
        complain "the reference lacks $name"
done <<<"$exported"

# One name without words in each way that a public header can declare one.
mkdir "$work/include"
cat >"$work/include/words.h" <<'CPP'
/// @file
/// Words for all but one.

/// A namespace.
namespace Words {

/// A class.
class Class {
  public:
    /// A function.
    void function();
    /// A number.
    int number = 0;
};

/// An enumeration.
enum class Enumeration {
    /// A value.
    kValue,
};

/// A free function.
void freeFunction();

/// Another name for a number.
using Alias = int;

/// A constant.
inline constexpr int kConstant = 1;

}  // namespace Words

/// A macro.
#define WORDS_MACRO 1
CPP
tried() { hasAllWords "$work/words" "INPUT = $work/include" >"$work/words.log" 2>&1; }
tried || complain "words for everything were not enough: $(<"$work/words.log")"
cp "$work/include/words.h" "$work/kept"

# mustMiss NAME=WORDS... takes the words of each name away, and looks for the names in the complaints.
mustMiss() {
    local each
    cp "$work/kept" "$work/include/words.h"
    for each in "$@"; do
        sed -i "/\/\/\/ ${each#*=}\.$/d" "$work/include/words.h"
    done
    ! tried || complain "nobody noticed that words were missing: $*"
    for each in "$@"; do
        grep -qE "\b${each%%=*}\b.* is not documented" "$work/words.log" ||
            complain "nobody noticed that words were missing: $each"
    done
}
mustMiss 'function=A function' 'number=A number' 'kValue=A value' 'freeFunction=A free function' \
    'Alias=Another name for a number' 'kConstant=A constant' 'WORDS_MACRO=A macro'
mustMiss 'Class=A class' 'Enumeration=An enumeration'
mustMiss 'Words=A namespace'
