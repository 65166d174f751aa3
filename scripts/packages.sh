# Installs Debian packages that are missing; sourced by the scripts at the root.
# shellcheck shell=bash

# packages_install LIST...: asks nothing of the network when nothing is missing. Without the rights to install, it prints the
# one command to type and ends the script with 3.
packages_install() {
    local wanted missing=() package
    wanted=$(sed 's/#.*//' "$@" | tr -s '[:space:]' '\n' | grep -v '^$' | sort -u)
    for package in $wanted; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    local as_root=()
    if [ "$(id -u)" != 0 ]; then
        if ! sudo -n true 2>/dev/null; then
            echo "These packages are missing. Type this, then start again:" >&2
            echo "  sudo apt-get install ${missing[*]}" >&2
            exit 3
        fi
        as_root=(sudo -n)
    fi
    echo "installing: ${missing[*]}" >&2
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get update -q >&2 &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" >&2 || {
        echo "the packages can't be installed: ${missing[*]}" >&2
        exit 1
    }
}
