; The installer of the update utility. Built by packaging/installer.sh, which gives:
;   PRODUCT        folder of product.nsh, which has defines from cmake/product.cmake, and of korsa.ini
;   PROGRAM, ICON  files that go into it
;   OUTPUT         the installer to make
;   SIGN           optional: command that signs a file; the file's path is appended to it
; docs/administrator.md describes what it does, its options and its exit codes.

Unicode true
SetCompressor /SOLID lzma
; The installer stores no file times, so that two builds of one commit are equal to the byte.
SetDateSave off
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true

!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh

!include "${PRODUCT}/product.nsh"
!define NAME "${TAVREL_TITLE}"
!define IMAGE "QRTTavrelUtility.exe"
!define UNINSTALLER "QRTTavrelUtility-uninstall.exe"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define EXIT_FAILED 2
!define EXIT_RUNNING 3
!define EXIT_RIGHTS 4
!searchparse "${TAVREL_VERSION}" "" VERSION_MAJOR "." VERSION_MINOR "."

Name "${NAME}"
OutFile "${OUTPUT}"
PESubsysVer 6.1
; Before .onInit, only /D= and an installed utility set $INSTDIR.
InstallDir ""
InstallDirRegKey HKLM "${ENTRY}" "InstallLocation"
BrandingText "${TAVREL_MAKER}"

VIProductVersion "${TAVREL_FILE_VERSION}"
VIAddVersionKey CompanyName "${TAVREL_MAKER}"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey FileVersion "${TAVREL_FILE_VERSION}"
VIAddVersionKey LegalCopyright "${TAVREL_COPYRIGHT}"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${TAVREL_VERSION}"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
; The installer is elevated. The Explorer that runs already starts the utility with the user's own rights.
!define MUI_FINISHPAGE_RUN "$WINDIR\explorer.exe"
!define MUI_FINISHPAGE_RUN_PARAMETERS '$\"$INSTDIR\${IMAGE}$\"'
!define MUI_FINISHPAGE_RUN_TEXT "Start the ${NAME}"
!define MUI_FINISHPAGE_RUN_NOTCHECKED
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

!include "${__FILEDIR__}/command_line.nsh"
!include "${__FILEDIR__}/folders.nsh"

; The folder of an installation that moves, or "".
Var OldFolder

!macro Common un
; Waits until the utility in the folder $R0 can be opened for writing, which no running program can. It tries for five
; seconds, because a virus scanner may hold the file for a moment.
Function ${un}WaitForUtility
  again:
  ${For} $1 1 10
    SetFileAttributes "$R0\${IMAGE}" NORMAL
    ; GENERIC_WRITE, not shared, OPEN_EXISTING
    System::Call 'kernel32::CreateFileW(w "$R0\${IMAGE}", i 0x40000000, i 0, p 0, i 3, i 0, p 0) p .r2 ? e'
    Pop $0
    ${If} $2 <> -1
    ${OrIfNot} ${FileExists} "$R0\${IMAGE}"
      System::Call 'kernel32::CloseHandle(p r2)'
      Return
    ${EndIf}
    Sleep 500
  ${Next}
  ${If} $0 <> 32 ; ERROR_SHARING_VIOLATION
    !insertmacro Fail ${EXIT_FAILED} "$R0\${IMAGE} cannot be written (Windows error $0)."
  ${EndIf}
  !insertmacro Print "The ${NAME} is running."
  MessageBox MB_RETRYCANCEL|MB_ICONQUESTION "The ${NAME} is running.$\n$\nClose it, also where other users are logged on, then choose Retry." /SD IDCANCEL IDRETRY again
  SetErrorLevel ${EXIT_RUNNING}
  Quit
FunctionEnd

; Deletes korsa.ini in the folder $R0, unless it was changed since the installer wrote it.
Function ${un}RemoveSeed
  GetFileTime "$R0\korsa.ini" $0 $1
  ReadRegStr $2 HKLM "${ENTRY}" "SeedWritten"
  ${If} $2 == "$0 $1"
    Delete "$R0\korsa.ini"
  ${EndIf}
FunctionEnd

; Deletes the installer's own files in the folder $R0, and the folder when nothing else is in it. $R1 begins the reason
; of a failure.
Function ${un}RemoveFiles
  Call ${un}RemoveSeed
  Delete "$R0\${IMAGE}"
  ${If} ${FileExists} "$R0\${IMAGE}"
    !insertmacro Fail ${EXIT_FAILED} "$R1$R0\${IMAGE} cannot be removed."
  ${EndIf}
  Delete "$R0\${UNINSTALLER}"
  RMDir $R0
  RMDir "$PROGRAMFILES32\${TAVREL_PRODUCT}"
FunctionEnd
!macroend
!insertmacro Common ""
!insertmacro Common "un."

; Chooses $INSTDIR: the folder of /D=, else of the installed utility, else of the product, else the default folder.
Function .onInit
  !insertmacro CheckStart "/D=" "${USAGE}"
  ${If} $R0 != ""
    StrCpy $R0 $R0 "" 3
    System::Call 'shlwapi::PathRemoveBackslashW(w R0R0)'
    ; NSIS does not take a folder that it does not accept, and removes characters that no path holds.
    ${If} $R0 == ""
    ${OrIf} $R0 != $INSTDIR
      SetSilent silent
      !insertmacro Fail ${EXIT_FAILED} "/D= takes the full path of a folder on a drive or network folder that exists, with backslashes, without quotes, and not below a file: $R0"
    ${EndIf}
  ${EndIf}
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR HKLM "Software\${TAVREL_MAKER}\${TAVREL_PRODUCT}\${TAVREL_PRODUCT_VERSION}" "Installpath"
    ${If} $INSTDIR == ""
    ${OrIfNot} ${FileExists} "$INSTDIR\*.*"
      StrCpy $INSTDIR "$PROGRAMFILES32\${TAVREL_PRODUCT}\${TAVREL_FOLDER}"
    ${EndIf}
  ${EndIf}
FunctionEnd

; What must be done before a file is written. One uninstall entry means one installation: installing in another folder
; moves it.
Section
  StrCpy $R0 $INSTDIR
  Call WaitForUtility
  ReadRegStr $OldFolder HKLM "${ENTRY}" "InstallLocation"
  ${If} $OldFolder == $INSTDIR
  ${OrIfNot} ${FileExists} "$OldFolder\${IMAGE}"
    StrCpy $OldFolder ""
  ${Else}
    StrCpy $R0 $OldFolder
    Call WaitForUtility
    Delete "$OldFolder\${IMAGE}.new"
  ${EndIf}
  Call PrepareLogFolder
SectionEnd

; The program. The new files are complete before the first of them replaces an old one, so a full disk damages no
; installation.
Section "-" FILES
  ; The size, in KiB, of what NSIS does not count: the uninstaller and korsa.ini.
  AddSize 64
  Call CreateProgramFolder
  StrCpy $0 0
  ClearErrors
  SetOutPath $INSTDIR
  File "/oname=${IMAGE}.new" "${PROGRAM}"
  WriteUninstaller "$INSTDIR\${UNINSTALLER}.new"
  ; If the new file is in $OldFolder too, that is $INSTDIR under another name (a link or a short name): no move.
  ${If} ${FileExists} "$OldFolder\${IMAGE}.new"
    StrCpy $OldFolder ""
  ${EndIf}
  ; This test clears the error flag.
  ${IfNot} ${Errors}
    SetFileAttributes "$INSTDIR\${UNINSTALLER}" NORMAL
    ; MOVEFILE_REPLACE_EXISTING
    System::Call 'kernel32::MoveFileExW(w "$INSTDIR\${IMAGE}.new", w "$INSTDIR\${IMAGE}", i 1) i .r0'
    ${If} $0 <> 0
      System::Call 'kernel32::MoveFileExW(w "$INSTDIR\${UNINSTALLER}.new", w "$INSTDIR\${UNINSTALLER}", i 1) i .r0'
    ${EndIf}
  ${EndIf}
  ${If} $0 = 0
    Delete "$INSTDIR\${IMAGE}.new"
    Delete "$INSTDIR\${UNINSTALLER}.new"
    SetOutPath $TEMP
    ${If} $R0 != ""
      RMDir /r $R0
    ${EndIf}
    !insertmacro Fail ${EXIT_FAILED} "The files cannot be written to $INSTDIR."
  ${EndIf}
SectionEnd

; korsa.ini, which each user's first start copies. One that was changed since it was installed, or that an administrator
; placed, is kept; a move takes it along.
Section
  StrCpy $R0 $INSTDIR
  Call RemoveSeed
  ${If} $OldFolder != ""
    StrCpy $R0 $OldFolder
    Call RemoveSeed
    ${If} ${FileExists} "$OldFolder\korsa.ini"
    ${AndIfNot} ${FileExists} "$INSTDIR\korsa.ini"
      System::Call 'kernel32::CopyFileW(w "$OldFolder\korsa.ini", w "$INSTDIR\korsa.ini", i 1) i .r0'
      ${If} $0 = 0
        !insertmacro Fail ${EXIT_FAILED} "$OldFolder\korsa.ini cannot be copied to $INSTDIR."
      ${EndIf}
      Delete "$OldFolder\korsa.ini"
    ${EndIf}
  ${EndIf}
  ${IfNot} ${FileExists} "$INSTDIR\korsa.ini"
    ClearErrors
    File "${PRODUCT}/korsa.ini"
    ${If} ${Errors}
      !insertmacro Fail ${EXIT_FAILED} "korsa.ini cannot be written to $INSTDIR."
    ${EndIf}
    GetFileTime "$INSTDIR\korsa.ini" $0 $1
    WriteRegStr HKLM "${ENTRY}" "SeedWritten" "$0 $1"
  ${EndIf}
SectionEnd

; The entry in the Start menu. The product can have a shortcut of that name: it stays, and is not recorded.
Section
  StrCpy $5 "$SMPROGRAMS\${TAVREL_PRODUCT}\${TAVREL_PRODUCT_LABEL} Update.lnk"
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 == $5
  ${OrIfNot} ${FileExists} $5
    CreateDirectory "$SMPROGRAMS\${TAVREL_PRODUCT}"
    CreateShortCut $5 "$INSTDIR\${IMAGE}"
    WriteRegStr HKLM "${ENTRY}" "StartMenuEntry" $5
  ${EndIf}
SectionEnd

; The uninstall entry. It no longer names the old folder, so this is removed last.
Section
  WriteRegStr HKLM "${ENTRY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${ENTRY}" "DisplayVersion" "${TAVREL_VERSION}"
  WriteRegDWORD HKLM "${ENTRY}" "VersionMajor" ${VERSION_MAJOR}
  WriteRegDWORD HKLM "${ENTRY}" "VersionMinor" ${VERSION_MINOR}
  WriteRegStr HKLM "${ENTRY}" "DisplayIcon" "$INSTDIR\${IMAGE}"
  WriteRegStr HKLM "${ENTRY}" "Publisher" "${TAVREL_MAKER}"
  WriteRegStr HKLM "${ENTRY}" "HelpLink" "${TAVREL_SUPPORT}"
  WriteRegStr HKLM "${ENTRY}" "InstallLocation" $INSTDIR
  WriteRegStr HKLM "${ENTRY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr HKLM "${ENTRY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
  SectionGetSize ${FILES} $0
  WriteRegDWORD HKLM "${ENTRY}" "EstimatedSize" $0
  WriteRegDWORD HKLM "${ENTRY}" "NoModify" 1
  WriteRegDWORD HKLM "${ENTRY}" "NoRepair" 1
  ${If} $OldFolder != ""
    StrCpy $R0 $OldFolder
    StrCpy $R1 "The utility is installed in $INSTDIR, but "
    Call RemoveFiles
  ${EndIf}
SectionEnd

Function un.onInit
  !insertmacro CheckStart "_?=" "${UN_USAGE}"
FunctionEnd

Section Uninstall
  StrCpy $R0 $INSTDIR
  Call un.WaitForUtility
  StrCpy $R1 ""
  Call un.RemoveFiles
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 != ""
    Delete $0
    RMDir "$SMPROGRAMS\${TAVREL_PRODUCT}"
  ${EndIf}
  ; Logs stay.
  Delete "${NOTICE}"
  RMDir "${LOG_FOLDER}"
  RMDir "${LOG_PARENT}"
  DeleteRegKey HKLM "${ENTRY}"
SectionEnd
