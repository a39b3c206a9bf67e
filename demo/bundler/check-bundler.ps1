# Ends with 0 when this version of the script bundler is installed and runs, else with 1.
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Script Bundler"

if (-not (Test-Path -LiteralPath "$folder\version.txt" -PathType Leaf)) {
    exit 1
}
if ((Get-Content -LiteralPath "$folder\version.txt") -ne '0.17.19') {
    exit 1
}
& "$folder\esbuild.exe" --version | Out-Null
if ($LASTEXITCODE -ne 0) {
    exit 1
}
exit 0
