#!/bin/sh
# Builds Debian's LuaJIT for Windows in folder $1: lua51.dll and headers in $1/luajit. The sources come
# from Debian's archive, by lists of packages that live in $1; those of the machine stay as they are.
set -eu

folder=$1
mkdir -p "$folder/parts" "$folder/lists/partial"
folder=$(cd "$folder" && pwd)
. /etc/os-release
[ -e "$folder/luajit-source" ] || {
    printf 'Types: deb-src\nURIs: http://deb.debian.org/debian\nSuites: %s\nComponents: main\nSigned-By: %s\n' \
        "$VERSION_CODENAME" /usr/share/keyrings/debian-archive-keyring.gpg >"$folder/parts/debian.sources"
    set -- -qq -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$folder/parts" \
        -o Dir::State::lists="$folder/lists"
    apt-get "$@" update
    (cd "$folder" && apt-get "$@" source --download-only luajit)
    dpkg-source -x "$folder"/luajit_*.dsc "$folder/luajit-source"
    rm -rf "$folder/lists"
}
make -C "$folder/luajit-source/src" -j "$(nproc)" HOST_CC='gcc -m64' CROSS=x86_64-w64-mingw32- \
    TARGET_SYS=Windows BUILDMODE=dynamic lua51.dll >"$folder/luajit.log" 2>&1 || {
    tail -n 20 "$folder/luajit.log" >&2
    exit 1
}
mkdir -p "$folder/luajit"
(cd "$folder/luajit-source/src" &&
    cp lua.h lua.hpp lualib.h lauxlib.h luaconf.h luajit.h lua51.dll "$folder/luajit")
