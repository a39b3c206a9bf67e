# Ends with 0 when the archiver's licence text is installed, else with 1.
if (Test-Path -LiteralPath "$env:ProgramFiles\Archiver\licence.txt" -PathType Leaf) {
    exit 0
}
exit 1
