#!/bin/sh
# usage: set-version.sh MAJOR.MINOR.PATCH
# Sets the version in the header, from which the build takes it, and in the files that are used without a
# build; gives the changelog's "Unreleased" that name and today's date.
set -eu
cd "$(dirname "$0")/.."
version=${1-}
if ! echo "$version" | grep -Eqx '[0-9]+\.[0-9]+\.[0-9]+'; then
    echo "set-version: '$version' is not MAJOR.MINOR.PATCH, such as 1.2.0" >&2
    exit 2
fi
minor=${version%.*}

sed -i -E "s/(VERSION_MAJOR) [0-9]+/\1 ${minor%.*}/; s/(VERSION_MINOR) [0-9]+/\1 ${minor#*.}/
    s/(VERSION_PATCH) [0-9]+/\1 ${version##*.}/" include/sorvo_audio.h
sed -i -E "s/^__version__ = .*/__version__ = \"$version\"/" python/sorvo_audio/__init__.py
sed -i -E "1,/\"version\"/s/(\"version\": )\"[0-9.]+\"/\1\"$version\"/" js/package.json
sed -i -E "1s/sorvo-audio [0-9.]+/sorvo-audio $version/" docs/man/sorvo-audio.1
sed -i -E "s/(find_package\(sorvo_audio) [0-9.]+/\1 $minor/" tests/install/consumer/CMakeLists.txt
# Debian's changelog has an entry per version; what changed is in ours.
{
    sed -E "1s/\(.*\)/($version)/; /^ -- /s/  .*/  $(date -R)/" debian/changelog | sed '/^ -- /q'
    echo
    cat debian/changelog
} >debian/changelog.new
mv debian/changelog.new debian/changelog
sed -i "s/^## Unreleased/&\n\n## $version - $(date +%F)/" CHANGELOG.md
git --no-pager diff --stat
