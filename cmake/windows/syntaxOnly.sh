#!/bin/sh
# Runs a compiler that only looks whether it can compile. What it precompiles it does write.
case $* in
    *cmake_pch.hxx.gch*) exec "$@" ;;
    *) exec "$@" -fsyntax-only ;;
esac
