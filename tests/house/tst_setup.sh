#!/bin/bash
# scripts/setup.sh installs what is missing and nothing else. The system's package tools are
# replaced by ones that write down how they are called.
source tests/house/assert.sh
setup=$PWD/scripts/setup.sh
tools="$sandbox/tools with blanks"
mkdir "$tools"
for tool in bash env sed grep cat; do
    ln -s "$(command -v "$tool")" "$tools/$tool"
done

tool() {
    printf '#!/bin/bash\n%s\n' "$2" >"$tools/$1"
    chmod +x "$tools/$1"
}

tool id 'echo "$USER_ID"'
tool sudo 'echo "sudo $*" >>"$CALLS"; exec "$@"'
tool dpkg-query 'for name in "${@:3}"; do
    case " $MISSING " in
    *" $name "*) status=1 ;;
    *) echo "$name installed" ;;
    esac
done
[ -z "$REMOVED" ] || echo "$REMOVED config-files"
exit ${status:-0}'
tool apt-get 'echo "$DEBIAN_FRONTEND apt-get $*" >>"$CALLS"; [ "$3" != "$FAILING" ]'

# setup PURPOSE [VARIABLE=VALUE...]: what the package tools were asked, and the exit status.
setup() {
    : >"$sandbox/calls"
    env -i PATH="$tools" CALLS="$sandbox/calls" USER_ID=0 "${@:2}" \
        bash "$setup" "$1" >"$sandbox/out" 2>"$sandbox/err" </dev/null
    echo "status $?" >>"$sandbox/calls"
    cat "$sandbox/calls"
}

apt='noninteractive apt-get -o DPkg::Lock::Timeout=600'
update="$apt update"
install="$apt install --yes --no-install-recommends"

check 'nothing is done when all is there' 'status 0' "$(setup test)"
check 'what is missing is installed by one call' "$update
$install g++ libsoxr-dev
status 0" "$(setup run MISSING='libsoxr-dev g++')"
check 'a package removed but for its configuration counts as missing' "$update
$install ccache
status 0" "$(setup run MISSING=ccache REMOVED=ccache)"
check 'running needs less than testing' 'status 0' "$(setup run MISSING=fonts-dejavu-core)"
check 'testing needs the fonts' "$update
$install fonts-dejavu-core
status 0" "$(setup test MISSING=fonts-dejavu-core)"
check 'an ordinary user goes through sudo' "sudo env DEBIAN_FRONTEND=$update
$update
sudo env DEBIAN_FRONTEND=$install g++
$install g++
status 0" "$(setup run MISSING=g++ USER_ID=1000)"
check 'a list that cannot be fetched does not stop the install' "$update
$install g++
status 0" "$(setup run MISSING=g++ FAILING=update)"
check 'a failing install fails' "$update
$install g++
status 1" "$(setup run MISSING=g++ FAILING=install)"
check 'an unknown purpose is refused' 'status 2' "$(setup dance)"

mv "$tools/sudo" "$sandbox/"
check 'without sudo nothing is tried' 'status 1' "$(setup run MISSING=g++ USER_ID=1000)"
check 'and the command is named' 'Not root, and no sudo here. As root, run: apt-get install g++' \
    "$(tail -n 1 "$sandbox/err")"

rm "$tools/apt-get"
check 'other systems are told the names' 'status 0' "$(setup run)"
check 'in words' 'This is no Debian system, so nothing was installed. The build needs what Debian
calls: cmake ninja-build g++ ccache pkg-config qtbase5-dev libsndfile1-dev libsoxr-dev libpcre2-dev libvorbis-dev libogg-dev libsdl2-dev' \
    "$(cat "$sandbox/err")"
finish
