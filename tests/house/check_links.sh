#!/bin/bash
# check_links.sh ROOT: files that the documents link to are there.
set -euo pipefail
cd "$1"
bad=0

# The targets of a document's links, without those to other places and within the page.
links_of() {
    grep --only-matching '](\([^)]*\))' "$1" | sed 's/^](//; s/)$//; s/#.*//' \
        | grep --invert-match -e '^$' -e '^[a-z]*:' || true
}

while IFS= read -r document; do
    while IFS= read -r link; do
        if [ ! -e "$(dirname "$document")/$link" ]; then
            echo "$document: $link is not there"
            bad=1
        fi
    done < <(links_of "$document")
done < <(find . -path './build*' -prune -o -path ./.git -prune -o -name '*.md' -print)
exit $bad
