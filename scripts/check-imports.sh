#!/usr/bin/env bash
# Walks the imports of every program and library in a folder for Windows: each has to be in the
# folder or in Windows itself. Says which isn't.
# Usage: scripts/check-imports.sh FOLDER
set -euo pipefail

folder=$1
# What every Windows since 7 has.
windows=" advapi32 bcrypt comctl32 comdlg32 crypt32 d3d11 d3d9 dnsapi dwmapi dxgi gdi32 imm32 iphlpapi
    kernel32 mpr msvcrt ncrypt netapi32 ole32 oleaut32 opengl32 secur32 setupapi shell32 shlwapi user32
    userenv uxtheme version winmm winspool.drv ws2_32 wtsapi32 "
windows=${windows//$'\n'/ }

inside=" $(find "$folder" -maxdepth 1 -name '*.dll' -printf '%f ' | tr '[:upper:]' '[:lower:]')"
count=0
missing=0
while IFS= read -r -d '' file; do
    while read -r import; do
        import=${import,,}
        count=$((count + 1))
        if [[ $inside != *" $import "* && $windows != *" ${import%.dll} "* ]]; then
            echo "check-imports: ${file#"$folder"/} needs $import" >&2
            missing=1
        fi
    done < <(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/.*DLL Name: //p')
done < <(find "$folder" \( -name '*.exe' -o -name '*.dll' \) -print0)
if [[ $count -eq 0 ]]; then
    echo "check-imports: nothing to look at in $folder" >&2
    missing=1
fi
exit "$missing"
