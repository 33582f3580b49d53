#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# xvfb.sh SAMPLES_DIR PROGRAM [ARGUMENTS...]
# Runs a test program on a virtual X server of its own. Exits 77, which ctest
# counts as skipped, when the server, the X tools or the shared samples are
# missing.
set -u
samples=$1
shift
for tool in xvfb-run xauth xdotool; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    echo "skipped: $tool is not installed (scripts/setup installs it)"
    exit 77
  fi
done
if [ ! -f "$samples/Captain Science #001.cbz" ]; then
  echo "skipped: the shared samples are not in $samples"
  exit 77
fi
# The window paints with QPainter alone; without this Qt's X11 plug-in loads an
# OpenGL integration (when Mesa is installed) whose libraries leak as they unload.
export QT_XCB_GL_INTEGRATION=none
exec xvfb-run -a -s "-screen 0 1280x1024x24" "$@"
