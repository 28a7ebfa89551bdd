#!/usr/bin/env bash
# Installs the dependencies, builds, and starts PelkoViewer on the default
# simulated camera. Without a display it runs the viewer under Xvfb, saves a
# screenshot of the window and prints the picture's path.
#   tools/quickstart.sh [viewer arguments, e.g. --camera SIM-SYNCOUT]
# The build folder is build/ unless PKO_BUILD_DIR names another.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${PKO_BUILD_DIR:-$root/build}

"$root/tools/install-deps.sh"
"$root/tools/build.sh" "$build"

viewer="$build/bin/PelkoViewer"
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$viewer" "$@"
fi

screenshot="$build/PelkoViewer-screenshot.png"
echo "No display found: running the viewer under Xvfb for a screenshot."
env -u QT_QPA_PLATFORM xvfb-run -a -s "-screen 0 1280x1024x24" \
  "$viewer" --screenshot "$screenshot" --print-tabs "$@"
echo "Screenshot of the viewer: $screenshot"
