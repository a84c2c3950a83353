#!/usr/bin/env bash
# ZantoRunner's one developer command.
#
#   ./dev.sh example [script.zxm]  set up, build, run a script hidden and print its log
#   ./dev.sh test [ctest args]     set up, build (x86_64 and i686), run the whole suite
#                                  (ZR_QUICK=1: x86_64 only, for a round of a few tests)
#   ./dev.sh bench                 set up (with OpenCV for the comparison), build, run the benchmarks
#   ./dev.sh dist                  build both targets and write the release zips, the setup
#                                  programs and SHA256SUMS to build/dist
#   ./dev.sh fuzz [SECONDS] [SEED] set up, build, fuzz the reader for longer (600 s, a new seed)
#   ./dev.sh fuzz-runs [COUNT] [SEED]  set up, build, run COUNT generated scripts (1000, a new seed)
#                                  with the real program in a sandbox of their own; crashes, hangs
#                                  and processes left behind are kept under tests/fuzz/runs
#   ./dev.sh help                  rewrite the help's generated pages under docs/help from the program
#   ./dev.sh setup                 install what is missing (Debian packages)
#   ./dev.sh build                 build the x86_64 target only
#
# Everything runs under Wine in a private prefix in build/x64/wineprefix, on
# one Xvfb display and one persistent wineserver for the whole command.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
BUILD=$ROOT/build/x64
BUILD32=$ROOT/build/i686
PACKAGES=(util-linux cmake ninja-build mingw-w64 g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
          wine64 wine xvfb xauth googletest python3 python3-pil python3-pyftpdlib python3-aiosmtpd unixodbc libsqliteodbc
          fp-utils python3-markdown nsis libxml2-utils fonts-wqy-microhei)

log() { printf '== %s\n' "$*" >&2; }

setup() {
  local missing=() wanted=("${PACKAGES[@]}" "$@")
  for p in "${wanted[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    log "installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
  fi
}

build() {
  local dir=$1 toolchain=$2 tests=${3:-ON} werror=${ZR_WERROR:-OFF}
  # Configure every time: it is quick when nothing changed, and it switches the
  # tests on or off as this command needs them.
  # ccache, where a developer has it, lets several checkouts side by side
  # share what one of them compiled (paths are hashed relative to the folder
  # that holds the checkouts).
  local launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
    export CCACHE_BASEDIR
    CCACHE_BASEDIR=$(dirname "$ROOT") CCACHE_NOHASHDIR=1
    export CCACHE_NOHASHDIR
  fi
  cmake -S "$ROOT" -B "$dir" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/$toolchain" \
    -DZR_TESTS="$tests" -DZR_WERROR="$werror" -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" >/dev/null
  cmake --build "$dir" -- -j"$(nproc)"
}

# One Xvfb, one prepared prefix and one persistent wineserver for the command.
XVFB_PID=""
WEB_PID=""
FTP_PID=""
MAIL_PID=""
harness_start() {
  # Every registry read, file open and window message of a Wine program is a
  # round trip to wineserver (or to the X server). On this two-core virtual
  # machine a round trip that wakes a process on the other core costs about
  # 50 us; with the program and the servers on one core it costs about 8 us.
  # So the harness, and all it starts, stays on the first core it may use.
  # ZR_ALL_CPUS keeps the full list for what should use every core (OpenCV in
  # the image benchmark).
  ZR_ALL_CPUS=$(taskset -cp $$ 2>/dev/null | sed 's/.*: //') || true
  export ZR_ALL_CPUS
  local first=${ZR_ALL_CPUS%%[-,]*}
  [ -n "$first" ] && taskset -cp "$first" $$ >/dev/null 2>&1 || true
  export WINEPREFIX=$BUILD/wineprefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
  export WINEARCH=win64
  # A known locale: Wine takes the machine's legacy ANSI code page from it
  # (1252 for C.UTF-8), which is how old scripts are read and written.
  export LANG=C.UTF-8 LC_ALL=C.UTF-8
  local fdfile
  fdfile=$(mktemp)
  setsid Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$fdfile" >/dev/null 2>&1 &
  XVFB_PID=$!
  for _ in $(seq 100); do [ -s "$fdfile" ] && break; sleep 0.1; done
  export DISPLAY=:$(head -n1 "$fdfile")
  rm -f "$fdfile"
  trap harness_stop EXIT
  wineserver -k >/dev/null 2>&1 || true
  wineserver -w >/dev/null 2>&1 || true
  if [ ! -f "$WINEPREFIX/.zr-ready" ]; then
    log "preparing the Wine prefix (once)"
    rm -rf "$WINEPREFIX"
    timeout 300 wineboot -i >/dev/null 2>&1 || true
    timeout 120 wine regedit /S "$ROOT/tests/harness/prefix.reg" >/dev/null 2>&1
    wineserver -w
    touch "$WINEPREFIX/.zr-ready"
  fi
  map_drives
  wineserver -p
  # Start Wine's own background processes (services, the desktop) now, with
  # no pipe of ours open, so that no test's output pipe is held by them.
  timeout 120 wine cmd /c exit >/dev/null 2>&1 </dev/null || true
  # The web server that the internet actions talk to, on loopback.
  local portfile
  portfile=$(mktemp)
  /usr/bin/python3 "$ROOT/tests/harness/webserver.py" "$portfile" "$ROOT/tests/web" >/dev/null 2>&1 &
  WEB_PID=$!
  for _ in $(seq 100); do [ -s "$portfile" ] && break; sleep 0.1; done
  export ZR_WEB_PORT
  ZR_WEB_PORT=$(cat "$portfile")
  rm -f "$portfile"
  # An FTP server on loopback port 21 (the port the FTP actions use), with a
  # fresh folder of its own; user "zanto", password "secret"; a file named
  # "silent..." is never answered (tests/harness/ftpserver.py).
  rm -rf "$BUILD/ftp-root"
  mkdir -p "$BUILD/ftp-root"
  /usr/bin/python3 "$ROOT/tests/harness/ftpserver.py" "$BUILD/ftp-root" >/dev/null 2>&1 &
  FTP_PID=$!
  for _ in $(seq 50); do (exec 3<>/dev/tcp/127.0.0.1/21) 2>/dev/null && break; sleep 0.1; done
  export ZR_FTP_ROOT=$BUILD/ftp-root
  # A small disk of its own (1 MiB of memory) that the tests fill, for the
  # writes that must fail whole and leave the old file as it was.
  mkdir -p "$BUILD/smalldisk"
  if ! mountpoint -q "$BUILD/smalldisk"; then
    mount -t tmpfs -o size=1m tmpfs "$BUILD/smalldisk" || log "could not mount the small disk (tests that fill it will fail)"
  fi
  export ZR_SMALL_DISK
  ZR_SMALL_DISK=$(winpath "$BUILD/smalldisk")
  # The ODBC data source "ZrTest": SQLite through unixODBC, which Wine's
  # odbc32 loads.
  /usr/bin/python3 "$ROOT/tests/harness/make-database.py" "$BUILD/odbc"
  export ODBCSYSINI=$BUILD/odbc ODBCINI=$BUILD/odbc/odbc.ini
  # SMTP on port 25 and POP3 on port 110 over one mailbox folder.
  rm -rf "$BUILD/mailbox"
  mkdir -p "$BUILD/mailbox"
  local readyfile
  readyfile=$(mktemp)
  /usr/bin/python3 "$ROOT/tests/harness/mailserver.py" "$readyfile" "$BUILD/mailbox" >/dev/null 2>&1 &
  MAIL_PID=$!
  for _ in $(seq 100); do [ -s "$readyfile" ] && break; sleep 0.1; done
  rm -f "$readyfile"
  export ZR_MAILBOX=$BUILD/mailbox
  cat >"$BUILD/harness.env" <<ENV
export WINEPREFIX='$WINEPREFIX'
export DISPLAY='$DISPLAY'
export WINEDEBUG=-all
export LANG=C.UTF-8 LC_ALL=C.UTF-8
export WINEDLLOVERRIDES='mscoree=;mshtml='
export ZR_WEB_PORT='$ZR_WEB_PORT'
export ODBCSYSINI='$ODBCSYSINI'
export ODBCINI='$ODBCINI'
export ZR_SMALL_DISK='$ZR_SMALL_DISK'
ENV
}

harness_stop() {
  wineserver -k >/dev/null 2>&1 || true
  [ -n "$XVFB_PID" ] && kill "$XVFB_PID" >/dev/null 2>&1 || true
  [ -n "$WEB_PID" ] && kill "$WEB_PID" >/dev/null 2>&1 || true
  [ -n "$FTP_PID" ] && kill "$FTP_PID" >/dev/null 2>&1 || true
  [ -n "$MAIL_PID" ] && kill "$MAIL_PID" >/dev/null 2>&1 || true
  rm -f "$BUILD/harness.env"
  mountpoint -q "$BUILD/smalldisk" 2>/dev/null && umount "$BUILD/smalldisk" 2>/dev/null || true
}

# The release of both targets, in build/dist: the zips, the setup programs
# made from them (NSIS, cmake/setup) and SHA256SUMS over all of it.
dist() {
  local version out=$ROOT/build/dist
  version=$(sed -n 's/^#define ZR_VERSION "\(.*\)"/\1/p' "$ROOT/src/editor/mainwindow.h")
  rm -rf "$out"
  /usr/bin/python3 "$ROOT/cmake/dist/make-zip.py" "$BUILD" "$ROOT" "$version" x64 "$out/ZantoRunner-$version-x64.zip"
  /usr/bin/python3 "$ROOT/cmake/dist/make-zip.py" "$BUILD32" "$ROOT" "$version" x86 "$out/ZantoRunner-$version-x86.zip"
  local arch
  for arch in x64 x86; do
    /usr/bin/python3 "$ROOT/cmake/setup/make-setup.py" "$out/ZantoRunner-$version-$arch.zip" "$ROOT" "$version" \
      "$arch" "$ROOT/build/setup/$arch" "$out/ZantoRunner-$version-$arch-setup.exe"
  done
  (cd "$out" && sha256sum -- * >SHA256SUMS.tmp && mv SHA256SUMS.tmp SHA256SUMS)
}

# The program takes its switches ("-r", "-e", "-v", ...) out of its command
# line wherever they stand, so a checkout under ~/src/zanto-runner would hand
# it Z:\...\zanto-runner\... with letters missing. The prefix gets two drives
# of its own instead: T: is the build folder, S: the checkout. Every path the
# harness gives a program goes through them (winpath here,
# tests/harness/winpaths.py for the Python side), whatever the checkout's
# path holds: dashes, blanks, "=", "%", letters beyond ASCII.
map_drives() {
  ln -sfn "$(realpath "$BUILD")" "$WINEPREFIX/dosdevices/t:"
  ln -sfn "$(realpath "$ROOT")" "$WINEPREFIX/dosdevices/s:"
}

winpath() {
  local full build root drive=Z: rest
  full=$(realpath -m "$1") build=$(realpath -m "$BUILD") root=$(realpath -m "$ROOT")
  rest=$full
  if [[ $full == "$build" || $full == "$build"/* ]]; then
    drive=T: rest=${full#"$build"}
  elif [[ $full == "$root" || $full == "$root"/* ]]; then
    drive=S: rest=${full#"$root"}
  fi
  rest=${rest//\//\\}
  printf '%s%s' "$drive" "${rest:-\\}"
}

example() {
  local script=${1:-$ROOT/examples/hello.zxm}
  local out=$BUILD/example
  # The script runs from a copy beside the files of examples/ and the order
  # form, as the release zip lays them out.
  rm -rf "$out"
  mkdir -p "$out"
  cp -r "$ROOT"/examples/* "$BUILD/tests/orderform.exe" "$out"/
  cp "$script" "$out"/
  script=$out/$(basename "$script")
  local logfile
  logfile="$(winpath "$out")\\log.txt"
  wine reg add 'HKCU\SOFTWARE\ZantoRunner' /v Log /t REG_DWORD /d 1 /f >/dev/null
  wine reg add 'HKCU\SOFTWARE\ZantoRunner' /v Logfile /t REG_SZ /d "$logfile" /f >/dev/null
  local code=0
  timeout 120 wine "$(winpath "$BUILD/ZantoRunner.exe")" /r "$(winpath "$script")" || code=$?
  log "log of $(basename "$script"):"
  tr -d '\r' <"$out/log.txt"
  log "exit code: $code"
}

cmd=${1:-test}
shift || true
case "$cmd" in
  setup) setup ;;
  build) setup; build "$BUILD" toolchain-x86_64.cmake ;;
  example)
    if [ -n "${ZR_EXAMPLE_IN_SUITE:-}" ]; then
      # The suite's own run of this command (readme.example): its build and
      # harness are up already, and the prefix's settings that the example
      # changes are put back as they were for the tests after it.
      # shellcheck disable=SC1091
      . "$BUILD/harness.env"
      saved=$BUILD/example-settings.reg
      rm -f "$saved"
      wine reg export 'HKCU\SOFTWARE\ZantoRunner' "$(winpath "$saved")" >/dev/null 2>&1 || true
      example "$@"
      wine reg delete 'HKCU\SOFTWARE\ZantoRunner' /f >/dev/null 2>&1 || true
      [ -s "$saved" ] && wine reg import "$(winpath "$saved")" >/dev/null 2>&1
      exit 0
    fi
    setup
    build "$BUILD" toolchain-x86_64.cmake OFF
    harness_start
    example "$@"
    ;;
  test)
    setup
    # The suite's build (CI's) fails on any compiler warning.
    export ZR_WERROR=ON
    build "$BUILD" toolchain-x86_64.cmake
    # ZR_QUICK=1: the x86_64 build and the tests only, for a developer's
    # round of a few tests (the suite's dist check then looks at old zips).
    if [ -z "${ZR_QUICK:-}" ]; then
      log "building the i686 target"
      build "$BUILD32" toolchain-i686.cmake OFF
      log "the release zips"
      dist
    fi
    harness_start
    code=0
    (cd "$BUILD" && ctest --output-on-failure --timeout 300 "$@") || code=$?
    # The fuzz drivers' figures, from CTest's log of the run.
    grep -hE "^fuzz: |^fuzz-runs: seed .*runs/s|^[0-9]+ runs: [0-9]+ crashes" "$BUILD/Testing/Temporary/LastTest.log" 2>/dev/null || true
    exit "$code"
    ;;
  bench)
    setup python3-opencv
    build "$BUILD" toolchain-x86_64.cmake
    harness_start
    "$ROOT/bench/run.sh" "$BUILD"
    ;;
  dist)
    setup
    build "$BUILD" toolchain-x86_64.cmake OFF
    build "$BUILD32" toolchain-i686.cmake OFF
    dist
    ;;
  fuzz)
    setup
    build "$BUILD" toolchain-x86_64.cmake
    harness_start
    seconds=${1:-600}
    seed=${2:-$(date +%s)}
    ZR_WINE_TIMEOUT=$((seconds + 120)) "$ROOT/tests/harness/wine-run" "$BUILD/bench/fuzz_reader.exe" "$seed" "$seconds" \
      "$(winpath "$ROOT/tests/scenario")" "$(winpath "$ROOT/tests/fuzz")"
    ;;
  fuzz-runs)
    # Its own sandbox (user, network namespace, prefixes, displays): no
    # harness here.
    setup
    build "$BUILD" toolchain-x86_64.cmake
    exec /usr/bin/python3 "$ROOT/tests/fuzz/fuzz_runs.py" "$@"
    ;;
  help)
    setup
    build "$BUILD" toolchain-x86_64.cmake OFF
    harness_start
    "$ROOT/tests/harness/wine-run" "$BUILD/help/helpdump.exe" >"$BUILD/help/dump.txt"
    /usr/bin/python3 "$ROOT/cmake/help/make-help.py" "$BUILD/help/dump.txt" "$ROOT" "$ROOT/docs/help"
    cmake --build "$BUILD" --target help_file
    log "the help's pages are in docs/help, the help file is $BUILD/ZantoRunner.chm"
    ;;
  *) echo "usage: $0 example|test|bench|dist|fuzz|fuzz-runs|setup|build|help" >&2; exit 2 ;;
esac
