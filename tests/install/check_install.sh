#!/usr/bin/env bash
# Installs a build tree into a scratch prefix, then builds and runs a consumer project against it
# through find_package and through pkg-config.
set -euo pipefail
build=$1
source_dir=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$source_dir/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/prefix" \
  -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$scratch/consumer" >/dev/null
LD_LIBRARY_PATH="$scratch/prefix/lib" "$scratch/consumer/consumer"

pc_dir=$(dirname "$(find "$scratch/prefix" -name zalaccelerate.pc)")
flags=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --cflags --libs zalaccelerate)
c++ -std=c++20 "$source_dir/consumer/main.cpp" $flags -o "$scratch/pc_consumer"
LD_LIBRARY_PATH=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --variable=libdir zalaccelerate) \
  "$scratch/pc_consumer"
