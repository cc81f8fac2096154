#!/bin/sh
# Starts or stops the persistent wineserver the Windows tests share.
#   wine-server.sh start|stop <WINEPREFIX>
# The server's standard streams are detached, or CTest would wait on the output it inherits.
set -eu
action=$1
export WINEPREFIX=$2
export WINEDEBUG=-all
export WINEDLLOVERRIDES="winedbg.exe,winemenubuilder.exe=d"

wine_loader=$(command -v wine64 || echo /usr/lib/wine/wine64)
wine_server=$(command -v wineserver || echo /usr/lib/wine/wineserver)

case "$action" in
  start)
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
      echo "Creating Wine prefix $WINEPREFIX"
      "$wine_loader" wineboot --init </dev/null >/dev/null 2>&1
      "$wine_server" -w
    fi
    # A server left running for this prefix (an interrupted run) is reused.
    "$wine_server" -p </dev/null >/dev/null 2>&1 || true
    # Start the prefix's services here, with detached streams: otherwise the first test starts
    # them and they keep its output pipe open, so CTest waits for them until the timeout.
    "$wine_loader" wineboot </dev/null >/dev/null 2>&1
    echo "wineserver running for $WINEPREFIX"
    ;;
  stop)
    "$wine_server" -k </dev/null >/dev/null 2>&1 || true
    echo "wineserver stopped"
    ;;
  *)
    echo "usage: wine-server.sh start|stop WINEPREFIX" >&2
    exit 2
    ;;
esac
