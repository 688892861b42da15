# To be sourced. Lists the C++ files of the checkout with the suffixes given, one a line; new
# files that git does not know yet count, removed ones do not.
sources() {
    local file
    git ls-files --cached --others --exclude-standard -- "${@/#/*.}" | while read -r file; do
        [ ! -e "$file" ] || echo "$file"
    done
}
