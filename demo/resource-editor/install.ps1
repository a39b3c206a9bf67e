# Installs the resource editor for all users; -command remove takes it away again.
param(
    [string]$command = 'install'
)
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Resource Editor"

if ($command -eq 'install') {
    New-Item -ItemType Directory -Force -Path $folder | Out-Null
    Copy-Item -LiteralPath "$PSScriptRoot\payload\rcedit-x64.exe" -Destination $folder -Force
    # Written last: the check takes the program for installed only when this is there.
    Set-Content -LiteralPath "$folder\version.txt" -Value '4.0.1'
} elseif ($command -eq 'remove') {
    if (Test-Path -LiteralPath $folder) {
        Remove-Item -LiteralPath $folder -Recurse -Force
    }
} else {
    Write-Error "unknown command: $command"
}
