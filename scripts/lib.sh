# What the scripts share: installing what a step needs, building a preset, the sources of the Windows build. Sourced, not run.
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# need PACKAGE...: installs those that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return
    echo "Installing ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

need_native() {
    need g++ cmake ninja-build pkg-config libtinyxml2-dev libgtest-dev libbenchmark-dev libcli11-dev libsndfile1-dev \
        libtomlplusplus-dev nlohmann-json3-dev
}

# build PRESET [TARGET...]: configures once, builds what is missing, tells how far it is; all else only if something fails.
build() {
    local preset=$1 targets=() target
    shift
    for target in "$@"; do targets+=(--target "$target"); done
    mkdir -p "build/$preset"
    local log=build/$preset.log
    [ -f "build/$preset/build.ninja" ] || echo "Building in build/$preset for the first time, which takes a minute or two" >&2
    if ! { cmake --preset "$preset" "${configure_arguments[@]}" && cmake --build --preset "$preset" "${targets[@]}"; } 2>&1 |
        tee "$log" | tell_steps; then
        tail -n 60 "$log"
        echo "The build of $preset failed; all of it stands in $log" >&2
        return 1
    fi
}
configure_arguments=()

# Tells of a long build, read from stdin, each tenth of its steps; on a terminal each step, in one line.
tell_steps() {
    local line told=0 end='\n' drawn=
    [ -t 2 ] && end=' \r'
    while IFS= read -r line; do
        [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || continue
        local done=${BASH_REMATCH[1]} all=${BASH_REMATCH[2]}
        [ "$all" -ge 20 ] || continue
        [ "$end" = '\n' ] && [ $((done * 10 / all)) = "$told" ] && continue
        told=$((done * 10 / all)) drawn=1
        printf "Building: step %d of %d$end" "$done" "$all" >&2
    done
    [ -z "$drawn" ] || [ "$end" = '\n' ] || printf '%40s\r' '' >&2
}

# source_of PACKAGE: prints the folder of the distribution's source of a package, unpacked below build/sources.
source_of() {
    local package=$1 folder=$root/build/sources/$1 apt=$root/build/sources/apt
    if [ ! -d "$folder" ]; then
        need dpkg-dev >&2
        mkdir -p "$apt/parts" "$apt/lists/partial" "$root/build/sources/$1.download"
        local list
        for list in /etc/apt/sources.list /etc/apt/sources.list.d/debian*; do
            [ -f "$list" ] && sed -E 's/^Types:.*/Types: deb-src/; s/^deb /deb-src /' "$list" >"$apt/parts/$(basename "$list")"
        done
        local options=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$apt/parts" -o "Dir::State::Lists=$apt/lists"
            -o APT::Sandbox::User=root -qq)
        mv "$apt/parts/sources.list" "$apt/parts/sources-list.list" 2>/dev/null || true
        (
            cd "$root/build/sources/$1.download"
            as_root apt-get "${options[@]}" update
            as_root apt-get "${options[@]}" source --download-only "$package"
            dpkg-source -x ./*.dsc "$folder.new"
        ) >"$root/build/sources/$1.log" 2>&1 || { tail -n 20 "$root/build/sources/$1.log" >&2; return 1; }
        mv "$folder.new" "$folder"
    fi
    echo "$folder"
}

# The machine that play and apohost run on: KELVANE_MACHINE, or the default one under the build folder. What is newer in
# machine/ is laid over it; its registry, once laid, is the user's and stays.
machine() {
    if [ -z "${KELVANE_MACHINE:-}" ]; then
        export KELVANE_MACHINE=$root/build/machine
        lay_machine
    fi
}

lay_machine() {
    mkdir -p "$KELVANE_MACHINE"
    [ -f "$KELVANE_MACHINE/registry.reg" ] || cp machine/registry.reg "$KELVANE_MACHINE/"
    (cd machine && find . -type f ! -name registry.reg ! -name heat.xml ! -name '*.toml' -exec cp -u --parents {} "$KELVANE_MACHINE/" \;)
    cp -u build/native/bin/Kelvane_x64.dll "$KELVANE_MACHINE/$driver_folder/"
}
driver_folder=c/windows/system32/ZVAudioDriver

# A machine of its own, laid anew each time: sensors on the speakers' magnets, the folder of the record files, and in the
# folder that debug mode looks into first the default tuning with sets by heat and sensor 3, the air's, for the library.
heat_machine() {
    export KELVANE_MACHINE=$root/build/machine-heat
    rm -rf "$root/build/machine-heat"
    lay_machine
    cp machine/heat.xml "$KELVANE_MACHINE/machine.xml"
    mkdir -p "$KELVANE_MACHINE/d/.LOGAudioKelvaneVoice" "$KELVANE_MACHINE/d/.ZVAudioParams"
    sed -e 's/^sets_by_heat = 0/sets_by_heat = 1/; s/^library_sensor = 1/library_sensor = 3/' machine/tuning/laptop_pair.toml \
        >"$KELVANE_MACHINE/heat.toml"
    build/native/bin/apohost tuning build "$KELVANE_MACHINE/heat.toml" \
        "$KELVANE_MACHINE/d/.ZVAudioParams/audio_kelvane_params_heat.xml"
}
