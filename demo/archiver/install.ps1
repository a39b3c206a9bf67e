# Installs the archiver for all users; -command remove takes it away again.
param(
    [string]$command = 'install'
)
$ErrorActionPreference = 'Stop'
$folder = "$env:ProgramFiles\Archiver"

if ($command -eq 'install') {
    New-Item -ItemType Directory -Force -Path $folder | Out-Null
    Copy-Item -LiteralPath "$PSScriptRoot\payload\7za.exe" -Destination $folder -Force
    # Written last: the check takes the program for installed only when this is there.
    Set-Content -LiteralPath "$folder\version.txt" -Value '21.07'
} elseif ($command -eq 'remove') {
    if (Test-Path -LiteralPath $folder) {
        Remove-Item -LiteralPath $folder -Recurse -Force
    }
} else {
    Write-Error "unknown command: $command"
}
