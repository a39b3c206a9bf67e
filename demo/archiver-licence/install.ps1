# Installs the archiver's licence text beside it.
param(
    [string]$command = 'install'
)
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Archiver"

if ($command -eq 'install') {
    New-Item -ItemType Directory -Force -Path $folder | Out-Null
    Copy-Item -LiteralPath "$PSScriptRoot\payload\LICENSE.txt" -Destination "$folder\licence.txt" -Force
} elseif ($command -eq 'remove') {
    if (Test-Path -LiteralPath "$folder\licence.txt") {
        Remove-Item -LiteralPath "$folder\licence.txt" -Force
    }
} else {
    Write-Error "unknown command: $command"
}
