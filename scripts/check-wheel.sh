#!/bin/sh
# Builds the source archive, and wheels from it; checks what the wheels hold and that their names tell the truth about
# the systems they run on; installs this processor's into an empty environment and uses it there, then an editable
# installation. The wheel for 64-bit ARM is used under QEMU, with Debian's Python and NumPy for that processor.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $wheel_packages python3-numpy qemu-user
work=$PWD/build/wheel
rm -rf "$work"
mkdir -p "$work"
python=/usr/bin/python3
fail() {
    echo "check-wheel: $1" >&2
    exit 1
}

# What a release consists of: an archive that needs nothing from the repository, and wheels made of it.
scripts/make-wheels.sh "$work/dist" >"$work/log" 2>&1 || {
    tail -n 40 "$work/log" >&2
    exit 1
}
for wheel in "$work"/dist/*.whl; do
    $python scripts/check-wheel.py "$wheel"
done

# NumPy comes from Debian, since no index is asked.
$python -m venv --system-site-packages "$work/venv"
"$work/venv/bin/pip" install --quiet --no-index "$work"/dist/*"$(uname -m)".whl
uses() { # from a folder where no module lies
    (cd "$work" && env -u PYTHONPATH -u SORVO_AUDIO_LIBRARY "$work/venv/bin/python3" -m sorvo_audio)
}
uses | tee "$work/used"
grep -q "library: $work/venv/" "$work/used" || fail "the wheel does not use its own library"
SORVO_AUDIO_LIBRARY=$(echo "$work"/venv/lib/python3*/site-packages/sorvo_audio/libsorvo_audio.so.0) \
    $python -B docs/measured/digests.py --check --own || fail "the wheel's library gives other bits"

# Installed for editing, the modules are those of the source.
"$work/venv/bin/pip" uninstall --quiet --yes sorvo-audio
source=$work/$(uname -m)
"$work/venv/bin/pip" install --quiet --no-index --no-build-isolation --editable "$source"
uses >"$work/used"
grep -q "library: $source/python/" "$work/used" || fail "an editable installation does not use the source"

if [ "$(uname -m)" != aarch64 ]; then
    mkdir "$work/arm"
    $python -m zipfile --extract "$work"/dist/*aarch64.whl "$work/arm"
    root=$(scripts/unpack-debian.sh bookworm arm64 python3-numpy)
    libdir=$root/usr/lib/aarch64-linux-gnu
    QEMU_LD_PREFIX=$root SORVO_AUDIO_LIBRARY=$work/arm/sorvo_audio/libsorvo_audio.so.0 qemu-aarch64 \
        -E LD_LIBRARY_PATH="$libdir/blas:$libdir/lapack" "$root/usr/bin/python3.11" \
        -B docs/measured/digests.py --check --own || fail "the wheel for 64-bit ARM gives other bits"
fi
echo "wheel: built from the source archive, installed, used; editable too"
