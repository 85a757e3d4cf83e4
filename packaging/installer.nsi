; The installer of the update utility. Built by packaging/installer.sh, which gives:
;   VERSION, PRODUCT_VERSION  as in CMakeLists.txt      OUTPUT  the installer to make
;   PROGRAM, SEED, ICON       files that go into it     SIGN    optional: command that signs the file named after it
; What it does, its switches and exit codes are told in docs/administrator.md.

Unicode true
SetCompressor /SOLID lzma
; Times of files are not stored, so that two installers of one source are equal to the byte.
SetDateSave off
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true

!include LogicLib.nsh
!include MUI2.nsh

!define PRODUCT "Varnexa ${PRODUCT_VERSION}"
!define NAME "${PRODUCT} Tavrel Utility"
!define PUBLISHER "NORVIK Software Inc."
!define IMAGE "QRTTavrelUtility.exe"
!define UNINSTALLER "QRTTavrelUtility-uninstall.exe"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define EXIT_FAILED 2
!define EXIT_RUNNING 3
!define EXIT_RIGHTS 4

; Rights on the log folder. System and administrators: all. Users, on the folder itself: list it and create files
; (0x1200ab), no folders, so that nobody plants a junction. Users and owners, on the files: read and write
; (0x12019f = FILE_GENERIC_READ | FILE_GENERIC_WRITE); nobody but administrators deletes a file or changes its
; rights. To append alone would not do: the utility opens its log with GENERIC_WRITE, which asks for
; FILE_WRITE_DATA too, and cuts an entry off again that did not fit on the disk.
!define LOG_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;;0x1200ab;;;BU)(A;OIIO;0x12019f;;;BU)(A;OIIO;0x12019f;;;S-1-3-4)"

Name "${NAME}"
OutFile "${OUTPUT}"
PESubsysVer 6.1
; Empty, so that a folder given by /D= can be told from none.
InstallDir ""
BrandingText "${PUBLISHER}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey CompanyName "${PUBLISHER}"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey FileVersion "${VERSION}.0"
VIAddVersionKey LegalCopyright "Copyright (C) ${PUBLISHER}"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}.0"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

; Ends with an exit code; says why first, unless it was started with /S.
!macro Fail code text
  MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
  SetErrorLevel ${code}
  Quit
!macroend

; What installer and uninstaller ask before anything is changed.
!macro Common un
Function ${un}RequireRights
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    !insertmacro Fail ${EXIT_RIGHTS} "${NAME} is installed and removed by an administrator."
  ${EndIf}
FunctionEnd

; A running program cannot be opened for writing, whoever runs it.
Function ${un}WaitForUtility
  ${If} ${FileExists} "$INSTDIR\${IMAGE}"
    again:
    ClearErrors
    FileOpen $0 "$INSTDIR\${IMAGE}" a
    ${If} ${Errors}
      MessageBox MB_RETRYCANCEL|MB_ICONQUESTION "${NAME} is running.$\n$\nClose it, also where other users are logged on, then choose Retry." /SD IDCANCEL IDRETRY again
      SetErrorLevel ${EXIT_RUNNING}
      Quit
    ${EndIf}
    FileClose $0
  ${EndIf}
FunctionEnd

; $1: when korsa.ini in the folder was last written. $2: the same, noted when it was installed; "" when it was not.
Function ${un}ReadSeedTimes
  StrCpy $1 "none"
  ClearErrors
  GetFileTime "$INSTDIR\korsa.ini" $3 $4
  ${IfNot} ${Errors}
    StrCpy $1 "$3 $4"
  ${EndIf}
  ReadRegStr $2 HKLM "${ENTRY}" "SeedWritten"
FunctionEnd
!macroend
!insertmacro Common ""
!insertmacro Common "un."

; $INSTDIR: as given, else where the utility is, else where the product is, else a folder of its own.
Function .onInit
  SetShellVarContext all
  Call RequireRights
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR HKLM "${ENTRY}" "InstallLocation"
  ${EndIf}
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR HKLM "Software\${PUBLISHER}\Varnexa\${PRODUCT_VERSION}" "Installpath"
    ${IfNot} ${FileExists} "$INSTDIR\*.*"
      StrCpy $INSTDIR ""
    ${EndIf}
  ${EndIf}
  ${If} $INSTDIR == ""
    StrCpy $INSTDIR "$PROGRAMFILES32\Varnexa\QRT15"
  ${EndIf}
FunctionEnd

; An earlier installation in another folder goes first: there is one entry, so there is one utility.
Function RemoveElsewhere
  ReadRegStr $5 HKLM "${ENTRY}" "InstallLocation"
  ${If} $5 != ""
  ${AndIf} $5 != $INSTDIR
  ${AndIf} ${FileExists} "$5\${UNINSTALLER}"
    ExecWait '"$5\${UNINSTALLER}" /S _?=$5' $0
    ${If} $0 <> 0
      !insertmacro Fail $0 "The utility in $5 could not be removed. Nothing was changed."
    ${EndIf}
    Delete "$5\${UNINSTALLER}"
    RMDir "$5"
  ${EndIf}
FunctionEnd

; Common application data is open to ordinary users, so the folder may be there already, made by anyone, or be a
; junction that would turn these rights on another folder.
Function PrepareLogFolder
  StrCpy $5 "$APPDATA\Varnexa\QRT15"
  ClearErrors
  CreateDirectory $5
  System::Call 'kernel32::GetFileAttributesW(w "$APPDATA\Varnexa") i .r0'
  System::Call 'kernel32::GetFileAttributesW(w r5) i .r1'
  IntOp $0 $0 | $1
  IntOp $0 $0 & 0x400 ; FILE_ATTRIBUTE_REPARSE_POINT
  ${If} ${Errors}
  ${OrIf} $0 <> 0
    !insertmacro Fail ${EXIT_FAILED} "The log folder $5 cannot be made, or leads elsewhere. Nothing was changed."
  ${EndIf}
  System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(w "${LOG_RIGHTS}", i 1, *p .r1, p 0) i .r0'
  ${If} $0 <> 0
    ; Owner and access list of the folder alone: what is in it keeps its own.
    System::Call 'advapi32::SetFileSecurityW(w r5, i 5, p r1) i .r0'
    System::Call 'kernel32::LocalFree(p r1)'
  ${EndIf}
  ${If} $0 = 0
    !insertmacro Fail ${EXIT_FAILED} "The rights on the log folder $5 cannot be set. Nothing was changed."
  ${EndIf}
FunctionEnd

; Beside the old program first: a full disk costs nothing.
Function CopyProgram
  ClearErrors
  SetOutPath $INSTDIR
  File "/oname=${IMAGE}.new" "${PROGRAM}"
  WriteUninstaller "$INSTDIR\${UNINSTALLER}"
  ${IfNot} ${Errors}
    Delete "$INSTDIR\${IMAGE}"
    Rename "$INSTDIR\${IMAGE}.new" "$INSTDIR\${IMAGE}"
  ${EndIf}
  ${If} ${Errors}
    Delete "$INSTDIR\${IMAGE}.new"
    !insertmacro Fail ${EXIT_FAILED} "The files cannot be written to $INSTDIR."
  ${EndIf}
FunctionEnd

; A korsa.ini that somebody else placed, or that was changed since it was installed, stays.
Function CopySeed
  Call ReadSeedTimes
  ${If} $1 == "none"
  ${OrIf} $1 == $2
    ClearErrors
    File "/oname=korsa.ini" "${SEED}"
    ${If} ${Errors}
      !insertmacro Fail ${EXIT_FAILED} "korsa.ini cannot be written to $INSTDIR."
    ${EndIf}
    Call ReadSeedTimes
    WriteRegStr HKLM "${ENTRY}" "SeedWritten" $1
  ${EndIf}
FunctionEnd

; The entry may also be the product's own: then it stays, and is not noted.
Function AddToStartMenu
  StrCpy $5 "$SMPROGRAMS\Varnexa\${PRODUCT} Update.lnk"
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 != $5
  ${AndIf} ${FileExists} $5
    Return
  ${EndIf}
  CreateDirectory "$SMPROGRAMS\Varnexa"
  CreateShortCut $5 "$INSTDIR\${IMAGE}"
  WriteRegStr HKLM "${ENTRY}" "StartMenuEntry" $5
FunctionEnd

Function Register
  WriteRegStr HKLM "${ENTRY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${ENTRY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${ENTRY}" "DisplayIcon" "$INSTDIR\${IMAGE}"
  WriteRegStr HKLM "${ENTRY}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKLM "${ENTRY}" "InstallLocation" $INSTDIR
  WriteRegStr HKLM "${ENTRY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr HKLM "${ENTRY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
  SectionGetSize 0 $0
  WriteRegDWORD HKLM "${ENTRY}" "EstimatedSize" $0
  WriteRegDWORD HKLM "${ENTRY}" "NoModify" 1
  WriteRegDWORD HKLM "${ENTRY}" "NoRepair" 1
FunctionEnd

Section
  ; What the functions write, in KiB.
  AddSize ${SIZE}
  Call WaitForUtility
  Call PrepareLogFolder
  Call RemoveElsewhere
  Call CopyProgram
  Call CopySeed
  Call AddToStartMenu
  Call Register
SectionEnd

Function un.onInit
  SetShellVarContext all
  Call un.RequireRights
FunctionEnd

; Removes files of the installer alone; a folder goes only when nothing else is in it.
Section Uninstall
  Call un.WaitForUtility
  Call un.ReadSeedTimes
  ${If} $1 == $2
    Delete "$INSTDIR\korsa.ini"
  ${EndIf}
  Delete "$INSTDIR\${IMAGE}"
  ${If} ${FileExists} "$INSTDIR\${IMAGE}"
    !insertmacro Fail ${EXIT_FAILED} "$INSTDIR\${IMAGE} cannot be removed."
  ${EndIf}
  Delete "$INSTDIR\${UNINSTALLER}"
  RMDir $INSTDIR
  ${If} $INSTDIR == "$PROGRAMFILES32\Varnexa\QRT15"
    RMDir "$PROGRAMFILES32\Varnexa"
  ${EndIf}
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 != ""
    Delete $0
    RMDir "$SMPROGRAMS\Varnexa"
  ${EndIf}
  RMDir "$APPDATA\Varnexa\QRT15"
  RMDir "$APPDATA\Varnexa"
  DeleteRegKey HKLM "${ENTRY}"
SectionEnd
