#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Runs a Windows program of a cross build under Wine.
#
# usage: wine.sh PREFIX start              set up PREFIX and keep its server alive
#        wine.sh PREFIX stop
#        wine.sh PREFIX PROGRAM [ARG...]
#
# PREFIX is a private directory: nothing of the user's own Wine is read or
# written. A server that outlives each program saves its start, which costs far
# more than a test.
set -eu
case $1 in
/*) WINEPREFIX=$1 ;;
*) WINEPREFIX=$PWD/$1 ;;
esac
shift
# No window system, no debug text, no offer to install what no program here uses.
WINEDEBUG=-all
WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES
unset DISPLAY WAYLAND_DISPLAY
# The heap of Wine's loader begins anywhere within a gibibyte in which a page that each
# Windows program needs has a fixed address: one start in some thousands fails, unless
# addresses are not random. A container may forbid that choice.
fixed=
if setarch -R true 2>/dev/null; then
    fixed="setarch -R"
fi

case $1 in
start)
    [ -f "$WINEPREFIX/ready" ] || {
        mkdir -p "$WINEPREFIX"
        $fixed wineboot --init >/dev/null 2>&1 ||
            { echo "wine.sh: Wine cannot set up $WINEPREFIX" >&2; exit 1; }
        # A program that crashes on purpose shall end at once, without a debugger.
        $fixed wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
            /v Debugger /d false /f >/dev/null
        wineserver -w
        : >"$WINEPREFIX/ready"
    }
    wineserver -p600 >/dev/null 2>&1 || : # one that runs already is as good
    # The services start with the first program and would hold its output open.
    $fixed wine cmd /c exit >/dev/null 2>&1 </dev/null
    ;;
stop) wineserver -k || : ;;
*) exec $fixed wine "$@" ;;
esac
