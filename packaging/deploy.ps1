# Installs the utility from this folder without the installer, for a deployment that runs as SYSTEM. Run it again for
# an upgrade. docs/administrator.md has the details. It has not been run on a Windows yet.
$ErrorActionPreference = 'Stop'

$program = "$(@(${env:ProgramFiles(x86)}, $env:ProgramFiles -ne $null)[0])\Varnexa\QRT15"
New-Item -Force -ItemType Directory $program | Out-Null
Copy-Item "$PSScriptRoot\QRTTavrelUtility.exe" $program
if (-not (Test-Path "$program\korsa.ini")) { Copy-Item "$PSScriptRoot\korsa.ini" $program }

# Creates the log folder unless it exists: under a random name, which no user can have created first, and renames
# it when it is complete. Users get rights on it only after it holds a file that they cannot delete.
if (-not (Test-Path "$env:ProgramData\Varnexa\QRT15")) {
    $new = "$env:ProgramData\$([guid]::NewGuid())"
    $rights = New-Object Security.AccessControl.DirectorySecurity
    $rights.SetSecurityDescriptorSddlForm('O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)')
    [IO.Directory]::CreateDirectory($new, $rights) | Out-Null
    Set-Content "$new\README.txt" 'Leave this file here: a folder that is not empty cannot become a link to another one.'
    $rights.SetSecurityDescriptorSddlForm('O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;;0x1200ab;;;BU)(A;OIIO;0x12019f;;;BU)(A;OIIO;0x12019f;;;S-1-3-4)')
    Set-Acl $new $rights
    New-Item -Force -ItemType Directory "$env:ProgramData\Varnexa" | Out-Null
    [IO.Directory]::Move($new, "$env:ProgramData\Varnexa\QRT15")
}
