#!/bin/sh
# Builds the page of examples/web, one file that also works from its folder, and serves it until interrupted.
set -eu
cd "$(dirname "$0")/.."
scripts/check-js.sh build
echo "build/web/index.html can be opened as it is; served at http://localhost:8000/"
exec python3 -m http.server --bind 127.0.0.1 --directory build/web 8000
