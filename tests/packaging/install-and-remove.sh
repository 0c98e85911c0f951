#!/usr/bin/env bash
# Installs from a build, makes the Debian packages, installs them in an empty root, runs what they bring and removes
# them again. install-and-remove.sh BUILD
set -euo pipefail
build=$(readlink -f "$1")
if [ "$(id -u)" -ne 0 ]; then exec unshare --map-root-user "$0" "$build"; fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
wizard="include/klnupdt/KlwUpdt.def include/klnupdt/KlwUpdt.h lib/klnupdt/KlnUpdt.EXE lib/klnupdt/KlnUpdt.chm share/doc/klnupdt/copyright"
publisher="bin/klnpub share/doc/klnpub/copyright share/doc/klnpub/many-machines.md share/doc/klnpub/nginx.conf share/man/man1/klnpub.1"

expect() { # what, expected words, found words
    [ "$(echo $2)" = "$(echo $3)" ] && return
    printf '%s: expected\n%s\nfound\n%s\n' "$1" "$2" "$3" >&2
    exit 1
}
files() { # below a folder
    (cd "$1" && find . -type f -o -type l | sed 's|^\./||' | LC_ALL=C sort)
}

cmake --install "$build" --prefix "$work/plain" >/dev/null
expect "cmake --install" "$wizard" "$(files "$work/plain")"
cmake --install "$build" --prefix "$work/publisher" --component publisher >/dev/null
expect "cmake --install --component publisher" "$publisher" "$(files "$work/publisher")"

(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/packages" >/dev/null)
mkdir -p "$work/root/var/lib/dpkg/info" "$work/root/var/lib/dpkg/updates"
touch "$work/root/var/lib/dpkg/status" "$work/root/var/lib/dpkg/available"
for name in klnupdt klnpub; do
    package=$(echo "$work/packages/${name}"_*.deb)
    needs=$(dpkg-deb -f "$package" Depends)
    case $name,$needs in
        klnupdt,*libcurl4*libqt6*) ;; # its other libraries are found, this one is declared
        klnpub,*libqt6*) echo "the publisher wants a window: $needs" >&2; exit 1 ;;
        klnpub,*libcurl4*libarchive*) ;;
        *) echo "$name depends on: $needs" >&2; exit 1 ;;
    esac
    dpkg --root="$work/root" --force-depends --install "$package" >/dev/null 2>&1 # its libraries are not in the root
done
expect "the packages" "$(printf '%s\n' $wizard $publisher | LC_ALL=C sort)" "$(files "$work/root/usr")"
"$work/root/usr/bin/klnpub" --help | grep -q 'klnpub pack NAME'
exit_code() { "$work/root/usr/bin/klnpub" "$@" >/dev/null 2>&1 && echo 0 || echo $?; }
expect "exit codes" "2 2 2 3 1" "$(exit_code) $(exit_code pack) $(exit_code check --nothing) $(exit_code list "$work/none") $(exit_code check "$work")"
dpkg --root="$work/root" --purge klnupdt klnpub >/dev/null 2>&1
expect "after removal" "" "$(files "$work/root" | grep -v '^var/lib/dpkg/' || true)"
echo "installed and removed"
