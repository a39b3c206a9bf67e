# Ends with 0 when this version of the resource editor is installed and runs, else with 1.
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Resource Editor"

if (-not (Test-Path -LiteralPath "$folder\version.txt" -PathType Leaf)) {
    exit 1
}
if ((Get-Content -LiteralPath "$folder\version.txt") -ne '4.0.1') {
    exit 1
}
& "$folder\rcedit-x64.exe" -h | Out-Null
if ($LASTEXITCODE -ne 0) {
    exit 1
}
exit 0
