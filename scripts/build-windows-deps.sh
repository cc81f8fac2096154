#!/usr/bin/env bash
# Builds Util's Windows x64 dependencies from Debian's source packages with the MinGW-w64
# posix-threads toolchain, as static libraries, into a cache outside the repository:
#   prefix  ${UTIL_DEPS_DIR:-$HOME/.cache/util-deps}/mingw64   (printed at the end)
#   work    ${UTIL_DEPS_DIR:-$HOME/.cache/util-deps}/src       (sources and one log per package)
# Safe to rerun: a stamp per package (source version, options, toolchain) skips what is built.
#
# Static link lines for consumers, in this order (every system library ships with MinGW-w64;
# advapi32 and user32 are on gcc's default list but are named so nothing relies on it):
#   OpenSSL    -lssl -lcrypto -lws2_32 -lcrypt32 -ladvapi32 -luser32
#   libcurl    -DCURL_STATICLIB; -lcurl -lssl -lcrypto -lws2_32 -lcrypt32 -lbcrypt -ladvapi32 -luser32
#   tinyxml2   -ltinyxml2                    (CMake: find_package(tinyxml2 CONFIG), tinyxml2::tinyxml2)
#   GoogleTest -lgmock_main -lgmock -lgtest  (CMake: find_package(GTest CONFIG), GTest::gmock_main...)
#   nlohmann   header-only                   (CMake: find_package(nlohmann_json CONFIG))
#   benchmark  -lbenchmark -lshlwapi         (CMake: find_package(benchmark CONFIG), benchmark::benchmark)
# bcrypt is for libcurl only. libcrypto.pc also lists gdi32, but nothing here imports from it.
set -euo pipefail
shopt -s inherit_errexit

repo_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
deps_dir=${UTIL_DEPS_DIR:-$HOME/.cache/util-deps}
prefix=$deps_dir/mingw64
work_dir=$deps_dir/src
stamp_dir=$prefix/.stamps
toolchain=$repo_dir/cmake/mingw-w64-x86_64.cmake
host=x86_64-w64-mingw32
jobs=$(nproc)

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
# As root, apt cannot hand downloads into root-owned dirs to its _apt user; skip that warning.
apt_opts=(-qq)
[ "$(id -u)" -ne 0 ] || apt_opts+=(-o APT::Sandbox::User=root)

# Options are part of each stamp: changing them rebuilds that package.
# no-module builds the legacy provider into libcrypto instead of a separate DLL.
openssl_opts=(mingw64 "--cross-compile-prefix=$host-" "--prefix=$prefix" --libdir=lib
  no-shared no-module no-tests)
# Only what Util uses (http, https, file, proxies, cookies) plus cheap defaults; --disable-pthreads
# makes the threaded resolver use Win32 threads, so libcurl needs no winpthread.
curl_opts=("--host=$host" "--prefix=$prefix" --disable-shared --enable-static
  "--with-openssl=$prefix" --without-zlib --without-brotli --without-zstd --without-libpsl
  --without-libidn2 --without-nghttp2 --without-librtmp --without-libssh2 --without-libssh
  --without-ca-bundle --without-ca-path --disable-ldap --disable-ldaps --disable-rtsp --disable-dict
  --disable-telnet --disable-tftp --disable-pop3 --disable-imap --disable-smtp --disable-gopher
  --disable-mqtt --disable-manual --disable-ntlm-wb --disable-pthreads --disable-dependency-tracking)
# What static libcrypto needs from Windows; curl's configure probes OpenSSL without pkg-config --static.
openssl_win_libs="-lws2_32 -lcrypt32 -ladvapi32 -luser32"
cmake_opts=(-G Ninja "-DCMAKE_TOOLCHAIN_FILE=$toolchain" -DCMAKE_BUILD_TYPE=Release
  "-DCMAKE_INSTALL_PREFIX=$prefix" -DCMAKE_INSTALL_LIBDIR=lib -DBUILD_SHARED_LIBS=OFF)
tinyxml2_opts=(-Dtinyxml2_BUILD_TESTING=OFF)
# gtest uses Win32 threading primitives on Windows anyway; this keeps pthread out of its targets.
googletest_opts=(-DBUILD_GMOCK=ON -DINSTALL_GTEST=ON -Dgtest_disable_pthreads=ON)
nlohmann_opts=(-DJSON_BuildTests=OFF -DJSON_Install=ON -DJSON_MultipleHeaders=ON)
# Google Benchmark for the Windows benchmark programs: the library only (its tests would download
# a bundled GoogleTest); no -Werror, as Debian builds it, so a new compiler warning cannot stop us.
benchmark_opts=(-DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF
  -DBENCHMARK_ENABLE_WERROR=OFF -DBENCHMARK_INSTALL_DOCS=OFF)

"$repo_dir/scripts/install-packages.sh" windows

# No -q on grep: an early exit would SIGPIPE apt-cache and fail the pipeline.
have_sources() { apt-cache showsrc openssl 2>/dev/null | grep '^Package:' >/dev/null; }

# apt-get source needs deb-src entries; add them only when apt knows no source package yet.
ensure_deb_src() {
  have_sources && return 0
  local f=/etc/apt/sources.list.d/debian.sources
  if [ -f "$f" ] && ! grep -Eq '^Types:.*deb-src' "$f"; then
    $sudo sed -i -E 's/^(Types:.*)$/\1 deb-src/' "$f"
  fi
  f=/etc/apt/sources.list
  if [ -f "$f" ] && ! grep -Eq '^[[:space:]]*deb-src[[:space:]]' "$f"; then
    $sudo sed -i -E '/^[[:space:]]*deb[[:space:]]/{p;s/^([[:space:]]*)deb([[:space:]])/\1deb-src\2/}' "$f"
  fi
  echo "Enabling deb-src and updating apt lists"
  $sudo apt-get update -qq
  have_sources || { echo "build-windows-deps.sh: no source packages known after apt-get update" >&2; exit 1; }
}

# Source versions apt knows, newest first. The newest may not download (the mirror here has
# answered 404 for bookworm-security sources), so fetch_source falls back in this order.
source_versions() {
  local v i sorted=()
  for v in $(apt-cache showsrc --only-source "$1" | sed -n 's/^Version: //p' | sort -u); do
    i=0
    while [ $i -lt ${#sorted[@]} ] && dpkg --compare-versions "${sorted[$i]}" gt "$v"; do i=$((i + 1)); done
    sorted=("${sorted[@]:0:$i}" "$v" "${sorted[@]:$i}")
  done
  echo "${sorted[@]}"
}

fetch_source() { # dir pkg versions... -> unpacks the first version that downloads into dir, prints it
  local dir=$1 pkg=$2 v
  shift 2
  for v in "$@"; do
    rm -rf "$dir"
    mkdir -p "$dir"
    echo "== apt-get source $pkg=$v" >&2
    if (cd "$dir" && apt-get source "${apt_opts[@]}" "$pkg=$v" >&2); then
      echo "$v"
      return 0
    fi
  done
  echo "could not download any of $pkg $* (stale apt lists? run apt-get update)" >&2
  return 1
}

build_openssl() {
  cd "$1"
  # Configure appends CC to the cross prefix: name the posix variant, whatever the alternatives say.
  CC=gcc-posix CXX=g++-posix ./Configure "${openssl_opts[@]}"
  make -j"$jobs" build_libs
  make install_dev
}

build_curl() {
  cd "$1"
  # pkg-config sees only our OpenSSL, never the host's .pc files.
  PKG_CONFIG_LIBDIR=$prefix/lib/pkgconfig PKG_CONFIG_PATH="" LIBS="$openssl_win_libs" \
    CC=$host-gcc-posix AR=$host-ar RANLIB=$host-ranlib ./configure "${curl_opts[@]}"
  grep -q '^#define USE_OPENSSL 1' lib/curl_config.h
  # Needed for CURLSSLOPT_NATIVE_CA: libcurl then loads the Windows CA store into OpenSSL.
  grep -q '^#define USE_WIN32_CRYPTO 1' lib/curl_config.h
  make -j"$jobs" -C lib
  make -C lib install
  make -C include install
  make install-pkgconfigDATA
}

build_tinyxml2() {
  cd "$1"
  cmake -S . -B build "${cmake_opts[@]}" "${tinyxml2_opts[@]}"
  cmake --build build -j "$jobs"
  cmake --install build
}

build_googletest() {
  cd "$1"
  cmake -S . -B build "${cmake_opts[@]}" "${googletest_opts[@]}"
  cmake --build build -j "$jobs"
  cmake --install build
}

build_benchmark() {
  cd "$1"
  # Debian's patch stops it reading git tags, so the version comes from the folder (benchmark-1.7.1).
  cmake -S . -B build "${cmake_opts[@]}" "${benchmark_opts[@]}" "-DGIT_VERSION=${1##*-}"
  cmake --build build -j "$jobs"
  cmake --install build
}

build_nlohmann-json3() {
  cd "$1"
  # Header-only: configure and install include/nlohmann plus the CMake package files.
  cmake -S . -B build "${cmake_opts[@]}" "${nlohmann_opts[@]}"
  cmake --install build
}

# gcc -dumpfullversion only says '12-posix' here; the package versions catch any toolchain update.
toolchain_id=$(dpkg-query -W -f='${Version} ' g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev)

stamp_key() { # pkg newest-known-version
  local opts cmake_key
  # The CMake builds also depend on what the toolchain file says.
  cmake_key="${cmake_opts[*]} toolchain-file=$(cksum <"$toolchain")"
  case "$1" in
    openssl) opts="${openssl_opts[*]}" ;;
    curl) opts="${curl_opts[*]} LIBS=$openssl_win_libs openssl=$(cat "$stamp_dir"/openssl* 2>/dev/null | cksum || true)" ;;
    tinyxml2) opts="$cmake_key ${tinyxml2_opts[*]}" ;;
    googletest) opts="$cmake_key ${googletest_opts[*]}" ;;
    nlohmann-json3) opts="$cmake_key ${nlohmann_opts[*]}" ;;
    benchmark) opts="$cmake_key ${benchmark_opts[*]}" ;;
  esac
  printf '%s newest=%s\ntoolchain %s\n%s\n' "$1" "$2" "$toolchain_id" "$opts"
}

fail() { # pkg version log
  printf '%-15s %-24s FAILED, log: %s\n' "$1" "$2" "$3" >&2
  tail -n 40 "$3" >&2
  exit 1
}

build_package() { # pkg
  local pkg=$1 versions key log dir version rc start
  read -r -a versions <<<"$(source_versions "$pkg")"
  [ ${#versions[@]} -gt 0 ] || { echo "build-windows-deps.sh: no source package '$pkg'" >&2; exit 1; }
  # Keyed by the newest known version, so a rerun does not retry a download that failed before.
  key=$(stamp_key "$pkg" "${versions[0]}")
  if [ -f "$stamp_dir/$pkg" ] && [ "$(cat "$stamp_dir/$pkg")" = "$key" ]; then
    printf '%-15s %-24s up to date\n' "$pkg" "$(cat "$stamp_dir/$pkg.version")"
    return 0
  fi
  rm -f "$stamp_dir/$pkg" "$stamp_dir/$pkg.version"
  log=$work_dir/$pkg.log
  dir=$work_dir/$pkg
  start=$SECONDS
  : >"$log"
  fetch_source "$dir" "$pkg" "${versions[@]}" >"$dir.version" 2>>"$log" || fail "$pkg" "${versions[0]}" "$log"
  version=$(cat "$dir.version")
  # A subshell with errexit whose status is checked afterwards: under || or if, errexit is off.
  set +e
  (
    set -euo pipefail
    src=$(find "$dir" -mindepth 1 -maxdepth 1 -type d)
    echo "== building $pkg $version in $src"
    "build_$pkg" "$src"
  ) >>"$log" 2>&1
  rc=$?
  set -e
  [ $rc -eq 0 ] || fail "$pkg" "$version" "$log"
  mkdir -p "$stamp_dir"
  printf '%s\n' "$key" >"$stamp_dir/$pkg"
  echo "$version" >"$stamp_dir/$pkg.version"
  printf '%-15s %-24s built in %ds\n' "$pkg" "$version" $((SECONDS - start))
}

mkdir -p "$work_dir" "$prefix"
ensure_deb_src
for pkg in openssl curl tinyxml2 googletest nlohmann-json3 benchmark; do
  build_package "$pkg"
done
echo "Windows dependencies: $prefix"
