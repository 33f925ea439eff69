# shellcheck shell=bash
# The toolchain for Windows: Debian's clang and lld, and for each architecture a folder with the
# headers and import libraries of mingw-w64 (UCRT), compiler-rt, libunwind, libc++ and what the tests
# and the tool link. All of it is built from Debian's source packages. Sourced by windows.sh.

llvmVersion=19
llvmUpstream=19.1.7
mingwUpstream=12.0.0
fmtUpstream=10.1.1
llvmPrograms=/usr/lib/llvm-$llvmVersion/bin
windowsTargets=(x86_64-w64-mingw32 aarch64-w64-mingw32)

toolchainPackages=(
    "clang-$llvmVersion" "lld-$llvmVersion" "llvm-$llvmVersion" bzip2 ccache cmake
    debian-archive-keyring googletest jq libcli11-dev make ninja-build nlohmann-json3-dev python3
    xz-utils
)

# What the toolchain is made of, in a few letters.
toolchainKey() {
    {
        cat "$root/scripts/windows/toolchain.sh"
        dpkg-query -W -f '${Package} ${Version}\n' "${toolchainPackages[@]}"
    } | sha256sum | cut -c 1-16
}

# Sets ORVEL_WINDOWS_TOOLCHAIN to the toolchain's folder, and makes it where it is missing.
requireToolchain() {
    requirePackages "${toolchainPackages[@]}"
    ORVEL_WINDOWS_TOOLCHAIN=$windowsCache/toolchain-$(toolchainKey)
    export ORVEL_WINDOWS_TOOLCHAIN
    [ ! -e "$ORVEL_WINDOWS_TOOLCHAIN/complete" ] || return 0
    say "Making the toolchain for Windows in $ORVEL_WINDOWS_TOOLCHAIN (about 5 minutes, once)"
    toolchainWork=$windowsCache/toolchain-work
    rm -rf "$toolchainWork" "$ORVEL_WINDOWS_TOOLCHAIN"
    mkdir -p "$toolchainWork" "$ORVEL_WINDOWS_TOOLCHAIN"
    # In a shell of its own, because a function in a condition is not ended by a failing command.
    local status=0
    set +e
    (
        set -e
        makeToolchain
    )
    status=$?
    set -e
    [ "$status" -eq 0 ] || fail "the toolchain could not be made; its logs are in $toolchainWork"
    touch "$ORVEL_WINDOWS_TOOLCHAIN/complete"
    rm -rf "$toolchainWork"
}

makeToolchain() {
    local target job jobs=() failed=0
    cd "$toolchainWork"
    fetchToolchainSources
    for target in "${windowsTargets[@]}"; do
        makeFrontEnd "$target"
    done
    PATH=$ORVEL_WINDOWS_TOOLCHAIN/bin:$PATH
    makeWindowsHeaders
    # Side by side, because a configuration keeps one core busy.
    for target in "${windowsTargets[@]}"; do
        makeTarget "$target" &
        jobs+=($!)
    done
    for job in "${jobs[@]}"; do
        wait "$job" || failed=1
    done
    return "$failed"
}

makeTarget() {
    makeWindowsLibraries "$1"
    echo "$1: C runtime"
    makeCompilerRuntime "$1"
    echo "$1: compiler runtime"
    makeCxxRuntime "$1"
    echo "$1: C++ runtime"
    makeTargetLibraries "$1"
    echo "$1: libraries of tests and tool"
}

fetchToolchainSources() {
    local apt=$toolchainWork/apt
    foreignApt "$apt" deb-src
    fetchSource "$apt" mingw mingw-w64 "$mingwUpstream"
    fetchSource "$apt" fmt fmtlib "$fmtUpstream"
    fetchSource "$apt" llvm "llvm-toolchain-$llvmVersion" "$llvmUpstream" \
        --wildcards --no-wildcards-match-slash --exclude='*/libcxx/test' \
        --exclude='*/compiler-rt/test' '*/runtimes' '*/cmake' '*/llvm/cmake' \
        '*/llvm/utils/llvm-lit' '*/libcxx' '*/libcxxabi' '*/libunwind' '*/compiler-rt'
    rm -rf "$apt"
}

# Programs that call Debian's clang for the target, and what CMake must know of them.
makeFrontEnd() {
    local target=$1 tool pair resources=$ORVEL_WINDOWS_TOOLCHAIN/lib/clang/$llvmVersion processor
    mkdir -p "$ORVEL_WINDOWS_TOOLCHAIN/bin" "$resources"
    ln -sfn "$("$llvmPrograms/clang" -print-resource-dir)/include" "$resources/include"
    for tool in ar dlltool nm objcopy ranlib rc readobj strip windres; do
        ln -sfn "$llvmPrograms/llvm-$tool" "$ORVEL_WINDOWS_TOOLCHAIN/bin/$target-$tool"
    done
    for pair in clang:gcc clang++:g++; do
        tool=$ORVEL_WINDOWS_TOOLCHAIN/bin/$target-${pair%:*}
        cat >"$tool" <<WRAPPER
#!/bin/sh
folder='$ORVEL_WINDOWS_TOOLCHAIN'
exec $llvmPrograms/${pair%:*} --start-no-unused-arguments --target=$target --sysroot="\$folder" \\
    -resource-dir="\$folder/lib/clang/$llvmVersion" -rtlib=compiler-rt -unwindlib=libunwind \\
    -stdlib=libc++ -fuse-ld=lld --end-no-unused-arguments "\$@"
WRAPPER
        chmod 755 "$tool"
        ln -sfn "$target-${pair%:*}" "$ORVEL_WINDOWS_TOOLCHAIN/bin/$target-${pair#*:}"
    done
    case $target in
        aarch64*) processor=ARM64 ;;
        *) processor=AMD64 ;;
    esac
    cat >"$ORVEL_WINDOWS_TOOLCHAIN/$target.cmake" <<CMAKE
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR $processor)
set(CMAKE_C_COMPILER "\${CMAKE_CURRENT_LIST_DIR}/bin/$target-clang")
set(CMAKE_CXX_COMPILER "\${CMAKE_CURRENT_LIST_DIR}/bin/$target-clang++")
set(CMAKE_RC_COMPILER "\${CMAKE_CURRENT_LIST_DIR}/bin/$target-windres")
set(CMAKE_AR "\${CMAKE_CURRENT_LIST_DIR}/bin/$target-ar" CACHE FILEPATH "")
set(CMAKE_RANLIB "\${CMAKE_CURRENT_LIST_DIR}/bin/$target-ranlib" CACHE FILEPATH "")
set(CMAKE_FIND_ROOT_PATH "\${CMAKE_CURRENT_LIST_DIR}/$target")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
CMAKE
}

# One folder of headers serves all architectures.
makeWindowsHeaders() {
    local target
    mkdir headers
    (
        cd headers
        ../mingw/mingw-w64-headers/configure --prefix="$ORVEL_WINDOWS_TOOLCHAIN/generic" \
            --enable-idl --with-default-win32-winnt=0x0A00 --with-default-msvcrt=ucrt
        make install
    ) >headers.log 2>&1
    cp -r /usr/include/CLI /usr/include/nlohmann "$ORVEL_WINDOWS_TOOLCHAIN/generic/include"
    for target in "${windowsTargets[@]}"; do
        mkdir -p "$ORVEL_WINDOWS_TOOLCHAIN/$target/share/cmake"
        ln -sfn ../generic/include "$ORVEL_WINDOWS_TOOLCHAIN/$target/include"
        cp -r /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json \
            "$ORVEL_WINDOWS_TOOLCHAIN/$target/share/cmake"
    done
}

# The start of a program, the C library, and the system's libraries that CMake, the C++ runtime and
# the project link: a tenth of what there is, which would take longer to make than all the rest.
makeWindowsLibraries() {
    local target=$1 kind made=(kernel32 m mingw32 mingwex moldname shell32 uuid) only library
    local copied=(advapi32 bcrypt comdlg32 gdi32 msvcrt ole32 oleaut32 runtimeobject ucrt user32)
    copied+=(winspool)
    case $target in
        aarch64*) kind=arm64 only=(--disable-lib32 --disable-lib64 --enable-libarm64) ;;
        *) kind=64 only=(--disable-lib32 --enable-lib64) ;;
    esac
    made=("${made[@]/#/lib$kind/lib}")
    copied=("${copied[@]/#/lib$kind/lib}")
    made=("${made[@]/%/.a}")
    copied=("${copied[@]/%/.a}")
    mkdir "crt-$target"
    (
        cd "crt-$target"
        ../mingw/mingw-w64-crt/configure --host="$target" \
            --prefix="$ORVEL_WINDOWS_TOOLCHAIN/$target" "${only[@]}" \
            --with-default-msvcrt=ucrt --enable-silent-rules --disable-dependency-tracking \
            CFLAGS=-O2 CC="$target-clang" AR="$target-ar" RANLIB="$target-ranlib" \
            DLLTOOL="$target-dlltool"
        make -j"$(nproc)" "lib${kind}_LIBRARIES=${made[*]}" "lib${kind}_DATA=${copied[*]}" \
            noinst_LIBRARIES= install
    ) >"crt-$target.log" 2>&1
    # Empty ones, because the front end names them.
    for library in ssp ssp_nonshared; do
        library=$ORVEL_WINDOWS_TOOLCHAIN/$target/lib/lib$library.a
        [ -e "$library" ] || "$llvmPrograms/llvm-ar" rcs "$library"
    done
}

# cmakeInstall NAME SOURCE PREFIX [OPTION...]
#
# Optimised for size, which takes the compiler less time than for speed.
cmakeInstall() {
    local name=$1 source=$2 prefix=$3
    shift 3
    {
        cmake -G Ninja -S "$source" -B "$name" -DCMAKE_BUILD_TYPE=MinSizeRel \
            -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
            -DCMAKE_C_COMPILER_LAUNCHER=ccache "$@" &&
            cmake --build "$name" &&
            cmake --install "$name"
    } >"$name.log" 2>&1
}

# The options for a runtime that a working compiler would need already.
bareTarget() {
    printf '%s\n' -DCMAKE_SYSTEM_NAME=Windows "-DCMAKE_C_COMPILER=$1-clang" \
        "-DCMAKE_CXX_COMPILER=$1-clang++" -DCMAKE_C_COMPILER_WORKS=ON \
        -DCMAKE_CXX_COMPILER_WORKS=ON "-DCMAKE_AR=$llvmPrograms/llvm-ar" \
        "-DCMAKE_RANLIB=$llvmPrograms/llvm-ranlib"
}

makeCompilerRuntime() {
    local target=$1 options
    mapfile -t options < <(bareTarget "$target")
    cmakeInstall "builtins-$target" llvm/compiler-rt/lib/builtins \
        "$ORVEL_WINDOWS_TOOLCHAIN/lib/clang/$llvmVersion" "${options[@]}" \
        -DCMAKE_C_COMPILER_TARGET="${target%%-*}-w64-windows-gnu" \
        -DCOMPILER_RT_DEFAULT_TARGET_ONLY=ON -DCOMPILER_RT_USE_BUILTINS_LIBRARY=ON \
        -DCOMPILER_RT_EXCLUDE_ATOMIC_BUILTIN=OFF -DLLVM_CONFIG_PATH=
}

makeCxxRuntime() {
    local target=$1 options
    mapfile -t options < <(bareTarget "$target")
    cmakeInstall "cxx-$target" llvm/runtimes "$ORVEL_WINDOWS_TOOLCHAIN/$target" "${options[@]}" \
        -DCMAKE_CXX_COMPILER_TARGET="${target%%-*}-w64-windows-gnu" \
        -DLLVM_ENABLE_RUNTIMES='libunwind;libcxxabi;libcxx' \
        -DLIBUNWIND_USE_COMPILER_RT=ON -DLIBUNWIND_ENABLE_SHARED=OFF \
        -DLIBUNWIND_INCLUDE_TESTS=OFF -DLIBCXXABI_USE_COMPILER_RT=ON \
        -DLIBCXXABI_USE_LLVM_UNWINDER=ON -DLIBCXXABI_ENABLE_SHARED=OFF \
        -DLIBCXXABI_LIBDIR_SUFFIX= -DLIBCXXABI_INCLUDE_TESTS=OFF -DLIBCXX_USE_COMPILER_RT=ON \
        -DLIBCXX_CXX_ABI=libcxxabi -DLIBCXX_ENABLE_SHARED=OFF \
        -DLIBCXX_ENABLE_STATIC_ABI_LIBRARY=ON -DLIBCXX_ENABLE_ABI_LINKER_SCRIPT=OFF \
        -DLIBCXX_LIBDIR_SUFFIX= -DLIBCXX_INCLUDE_TESTS=OFF -DLIBCXX_INCLUDE_BENCHMARKS=OFF \
        -DLIBCXX_INSTALL_MODULES=OFF
}

makeTargetLibraries() {
    local target=$1
    local options=("-DCMAKE_TOOLCHAIN_FILE=$ORVEL_WINDOWS_TOOLCHAIN/$target.cmake")
    # Not optimised, as the tests are not.
    cmakeInstall "googletest-$target" /usr/src/googletest "$ORVEL_WINDOWS_TOOLCHAIN/$target" \
        "${options[@]}" -DCMAKE_BUILD_TYPE=
    cmakeInstall "fmt-$target" fmt "$ORVEL_WINDOWS_TOOLCHAIN/$target" "${options[@]}" \
        -DFMT_DOC=OFF -DFMT_TEST=OFF
}
