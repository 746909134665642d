#!/usr/bin/env bash
# Creates (or refreshes) the private 64-bit wine prefix named by WINEPREFIX, in which the tests
# run the Windows plug-in and host. Wine's Mono and Gecko installers are skipped: nothing here
# needs .NET or a browser, and they would ask to download.
set -euo pipefail
: "${WINEPREFIX:?set WINEPREFIX to the prefix folder}"
export WINEPREFIX WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
mkdir -p "$WINEPREFIX"
wineboot --init >/dev/null 2>&1
# The editor's text is "Arial"; Liberation Sans (fonts-liberation) has the same metrics, so text
# measures and fits as on Windows.
wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v Arial /t REG_SZ /d 'Liberation Sans' /f >/dev/null 2>&1
wineserver -w
test -d "$WINEPREFIX/drive_c/windows/system32" || { echo "wine prefix $WINEPREFIX was not created" >&2; exit 1; }
echo "wine prefix ready: $WINEPREFIX"
