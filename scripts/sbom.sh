#!/usr/bin/env bash
# Writes the list of all files of a release's folder, in SPDX's tag-value form, to a file of it.
# Usage: scripts/sbom.sh NAME FOLDER FILE
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/release.sh
. scripts/release.sh

name=$1
folder=$2
list=$3

# licence_of FILE: by the table of what isn't ours.
licence_of() {
    local files licence pattern
    while IFS='|' read -r files _ licence _; do
        for pattern in $files; do
            # shellcheck disable=SC2053 # a pattern it is
            if [[ $1 == $pattern ]]; then
                echo "$licence"
                return
            fi
        done
    done < <(grep -v '^#' packaging/components)
    case $1 in
        *licenses/*) echo NOASSERTION ;;
        *) echo MIT ;;
    esac
}

files=()
while IFS= read -r -d '' file; do
    files+=("$file")
done < <(cd "$folder" && find . -type f ! -path "./$list" ! -path './DEBIAN/*' -print0 | sort -z)
sums=$(cd "$folder" && sha1sum "${files[@]}" | cut -c 1-40 | sort | tr -d '\n' | sha1sum | cut -c 1-40)

{
    cat <<END
SPDXVersion: SPDX-2.3
DataLicense: CC0-1.0
SPDXID: SPDXRef-DOCUMENT
DocumentName: $name
DocumentNamespace: https://nacellebench.example/spdx/$name-$sums
Creator: Tool: nacellebench-sbom
Created: $(date --utc --date "@$SOURCE_DATE_EPOCH" +%FT%TZ)

PackageName: NacelleBench
SPDXID: SPDXRef-Package
PackageVersion: $version
PackageDownloadLocation: NOASSERTION
FilesAnalyzed: true
PackageVerificationCode: $sums (excludes: ./$list)
PackageLicenseConcluded: NOASSERTION
PackageLicenseInfoFromFiles: NOASSERTION
PackageLicenseDeclared: MIT
PackageCopyrightText: $(holders)
Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-Package
END
    for i in "${!files[@]}"; do
        file=${files[i]}
        cat <<END

FileName: $file
SPDXID: SPDXRef-File-$i
FileChecksum: SHA1: $(sha1sum <"$folder/$file" | cut -c 1-40)
FileChecksum: SHA256: $(sha256sum <"$folder/$file" | cut -c 1-64)
LicenseConcluded: $(licence_of "${file#./}")
LicenseInfoInFile: NOASSERTION
FileCopyrightText: NOASSERTION
END
    done
} >"$folder/$list.new"
mv "$folder/$list.new" "$folder/$list"
