# Installs the script bundler for all users; -command remove takes it away again.
param(
    [string]$command = 'install'
)
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Script Bundler"

if ($command -eq 'install') {
    New-Item -ItemType Directory -Force -Path $folder | Out-Null
    Copy-Item -LiteralPath "$PSScriptRoot\payload\esbuild.exe" -Destination $folder -Force
    # Written last: the check takes the program for installed only when this is there.
    Set-Content -LiteralPath "$folder\version.txt" -Value '0.17.19'
} elseif ($command -eq 'remove') {
    if (Test-Path -LiteralPath $folder) {
        Remove-Item -LiteralPath $folder -Recurse -Force
    }
} else {
    Write-Error "unknown command: $command"
}
