#!/bin/sh
# Installs the Debian packages that are missing, and does nothing when none is.
#
#   scripts/install-packages.sh PACKAGE...
set -eu

missing=""
for package in "$@"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

echo "Installing Debian packages:$missing"
if [ "$(id -u)" -eq 0 ]; then
    as_root=""
elif command -v sudo >/dev/null; then
    as_root="sudo"
else
    echo "Neither root nor sudo is to be had. As root, run: apt-get install$missing" >&2
    exit 1
fi

apt() {
    $as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y -o DPkg::Lock::Timeout=600 -o APT::Update::Error-Mode=any "$@"
}
# The lists are fetched only if apt does not know a package, or knows a version that is gone.
# shellcheck disable=SC2086
apt install --no-install-recommends $missing || {
    apt update
    apt install --no-install-recommends $missing
}
