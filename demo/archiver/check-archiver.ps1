# Ends with 0 when this version of the archiver is installed and runs, else with 1.
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Archiver"

if (-not (Test-Path -LiteralPath "$folder\version.txt" -PathType Leaf)) {
    exit 1
}
if ((Get-Content -LiteralPath "$folder\version.txt") -ne '21.07') {
    exit 1
}
& "$folder\7za.exe" i | Out-Null
if ($LASTEXITCODE -ne 0) {
    exit 1
}
exit 0
