#!/usr/bin/env bash
# Formats the sources; with --check, only lists unformatted ones and fails if there are any.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

ensure_packages git clang-format-19
mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run --Werror)
git ls-files -z '*.h' '*.cpp' '*.c' | xargs -0 clang-format-19 "${mode[@]}"
