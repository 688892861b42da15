#!/bin/bash
# check_includes.sh LAYERS ROOT: each folder includes headers of itself and of the folders it may
# use, always by their full name from the root, and every header is guarded by #pragma once.
set -euo pipefail
layers=$(cat "$1")
cd "$2"
bad=0

complain() {
    echo "$*"
    bad=1
}

# The sources in a folder and, unless a depth says otherwise, below it.
files_of() {
    find "$@" \( -name '*.h' -o -name '*.cpp' \)
}

# Lines "file:line:text" of the project's own includes, of the same files.
own_includes() {
    files_of "$@" | while IFS= read -r file; do
        grep --with-filename --line-number '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' \
            "$file" || true
    done
}

check_folder() {
    local folder=$1 allowed=$2 line header
    while IFS= read -r line; do
        header=${line#*\"}
        header=${header%%\"*}
        case $header in
        *../* | ./*) complain "$line: write the path from the root" ;;
        *.moc) ;;
        */*)
            case " $folder $allowed " in
            *" ${header%/*} "*) ;;
            *) complain "$line: $folder must not use ${header%/*}" ;;
            esac
            ;;
        *) complain "$line: write the path from the root" ;;
        esac
    done < <(own_includes "$folder" -maxdepth 1)
}

# A folder with sources below a layer is a layer itself, or nobody would look at its includes.
check_subfolders() {
    local subfolder
    while IFS= read -r subfolder; do
        grep --quiet "^$subfolder :" <<<"$layers" ||
            complain "The folder $subfolder has no place among the layers."
    done < <(files_of "$1" | sed 's|/[^/]*$||' | sort -u)
}

while read -r folder colon allowed; do
    case $folder in
    '' | \#*) continue ;;
    esac
    [ -d "$folder" ] || continue
    check_folder "$folder" "$allowed"
    check_subfolders "$folder"
done <<<"$layers"

for folder in tests bench fuzz; do
    [ ! -d "$folder" ] || while IFS= read -r line; do
        case $line in
        *\"*../*) complain "$line: write the path from the root" ;;
        esac
    done < <(own_includes "$folder")
done

while IFS= read -r header; do
    grep --quiet --line-regexp '#pragma once' "$header" || complain "$header: lacks #pragma once"
done < <(find . -path './build*' -prune -o -path ./.git -prune -o -name '*.h' -print)
exit $bad
