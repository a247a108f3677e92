#!/bin/bash
# Makes the Debian packages, and the archive for the host application from as many of its versions as are given.
#
#   scripts/package.sh [VERSION=SDK[,OPTION OF CMAKE...]...]
#   scripts/package.sh 14.1=/opt/Nuke14.1v2,-DZET_OLD_STRING_ABI=ON,-DOpenCV_DIR=/opt/old/lib/cmake/opencv4 15.1=/opt/Nuke15.1v1
#
# All of them end up in build/packages.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
packages=$project/build/packages
cd "$project"
"$project/scripts/install-dependencies.sh" build
rm -rf "$packages"
mkdir -p "$packages"

# configure_and_build NAME TARGET OPTIONS...
configure_and_build() {
    local folder=build/package-$1 target=$2
    shift 2
    cmake --preset release -B "$folder" -DBUILD_TESTING=OFF -DCMAKE_INSTALL_PREFIX=/usr "$@"
    cmake --build "$folder" --target "$target" -j "$(nproc)"
}

# The first name in each exported symbol, behind its namespace, has to stand in a header that is installed.
check_exports() {
    local library=$1 headers=$2 names name
    names=$(nm --dynamic --demangle --defined-only "$library" | cut -d ' ' -f 3- |
        sed -E 's/^(typeinfo|typeinfo name|vtable|guard variable) for //' |
        grep -oE '^((Zentrel|MediaConversion)::)?[A-Za-z0-9_]+' | sed 's/.*:://' | sort -u)
    for name in $names; do
        grep -qrw "$name" "$headers" || { echo "$library exports \"$name\", which no header names" >&2; return 1; }
    done
}

# The library is shared for those who link it; the tool has it inside, as its plug-ins do.
configure_and_build library MediaConversion -DBUILD_SHARED_LIBS=ON -DZET_TOOL=OFF
cmake --install build/package-library --component development --prefix "$project/build/package-library/installed"
check_exports "$(find build/package-library/lib -name libMediaConversion.so)" build/package-library/installed/include
configure_and_build tool all
for build in library tool; do
    components="library;development"
    [[ $build == library ]] || components=tool
    (cd "build/package-$build" && cpack -G DEB -D CPACK_COMPONENTS_ALL="$components" -B "$packages")
done
rm -rf "$packages/_CPack_Packages"

[[ $# -gt 0 ]] || exit 0
version=$(sed -nE 's/^project\(zetWriter VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
name=zetWriter-$version-linux-$(uname -m)
stage=build/package-host/$name
rm -rf "$stage"
mkdir -p "$stage"
cp packaging/host/init.py packaging/host/INSTALL.txt "$stage"
for argument in "$@"; do
    host=${argument%%=*}
    IFS=, read -r -a options <<<"${argument#*=}"
    configure_and_build "host-$host" zetWriterNuke -DZET_TOOL=OFF -DNUKE_ROOT="${options[0]}" "${options[@]:1}"
    cmake --install "build/package-host-$host" --component nuke --strip --prefix "$stage/installed"
    mkdir "$stage/$host"
    find "$stage/installed" -type f -exec mv -t "$stage/$host" {} +
    rm -r "$stage/installed"
done
tar --create --gzip --file "$packages/$name.tar.gz" --owner 0 --group 0 --directory build/package-host "$name"
ls -l "$packages"
