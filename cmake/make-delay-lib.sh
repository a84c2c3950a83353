#!/bin/sh
# Writes a delay-load import library for a system DLL from mingw-w64's own
# import library: the functions it exports, listed by nm, into a .def file
# that dlltool turns into a library whose calls load the DLL on first use.
#
#   make-delay-lib.sh NM DLLTOOL IMPORT-LIBRARY DLL-NAME OUTPUT
set -eu
nm=$1 dlltool=$2 import=$3 dll=$4 out=$5
def=$out.def
{
  echo "LIBRARY $dll"
  echo "EXPORTS"
  "$nm" "$import" | awk '$2 == "T" && $3 !~ /^\./ { print "  " $3 }' | sort -u
} >"$def"
"$dlltool" --input-def "$def" --output-delaylib "$out"
