; The installer of the update utility. Built by packaging/installer.sh, which gives:
;   VERSION, FILE_VERSION as in generated/version.h      OUTPUT  the installer to make
;   PRODUCT              defines from cmake/product.cmake
;   PROGRAM, SEED, ICON  files that go into it
;   SIGN                 optional: command that signs a file; the file's path is appended to it
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

!include "${PRODUCT}"
!define NAME "${TAVREL_TITLE}"
!define IMAGE "QRTTavrelUtility.exe"
!define UNINSTALLER "QRTTavrelUtility-uninstall.exe"
!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define EXIT_FAILED 2
!define EXIT_RUNNING 3
!define EXIT_RIGHTS 4
!searchparse "${VERSION}" "" VERSION_MAJOR "." VERSION_MINOR "."

Name "${NAME}"
OutFile "${OUTPUT}"
PESubsysVer 6.1
; Empty: before .onInit, only /D= sets $INSTDIR.
InstallDir ""
BrandingText "${TAVREL_MAKER}"

VIProductVersion "${FILE_VERSION}"
VIAddVersionKey CompanyName "${TAVREL_MAKER}"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey FileVersion "${FILE_VERSION}"
VIAddVersionKey LegalCopyright "${TAVREL_COPYRIGHT}"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"

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
!include "${__FILEDIR__}/seed.nsh"

!macro Common un
Function ${un}RequireRights
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    !insertmacro Fail ${EXIT_RIGHTS} "Only an administrator can install or remove the ${NAME}."
  ${EndIf}
FunctionEnd

; Waits until the utility in the folder $R0 can be opened for writing, which no running program can. It tries for five
; seconds, because a virus scanner may hold the file for a moment.
Function ${un}WaitForUtility
  again:
  StrCpy $1 0
  ${Do}
    ${IfNot} ${FileExists} "$R0\${IMAGE}"
      Return
    ${EndIf}
    SetFileAttributes "$R0\${IMAGE}" NORMAL
    ; GENERIC_WRITE, not shared, OPEN_EXISTING
    System::Call 'kernel32::CreateFileW(w "$R0\${IMAGE}", i 0x40000000, i 0, p 0, i 3, i 0, p 0) p .r2 ? e'
    Pop $0
    ${If} $2 <> -1
      System::Call 'kernel32::CloseHandle(p r2)'
      Return
    ${EndIf}
    Sleep 500
    IntOp $1 $1 + 1
  ${LoopUntil} $1 = 10
  ${If} $0 <> 32 ; ERROR_SHARING_VIOLATION
    !insertmacro Fail ${EXIT_FAILED} "$R0\${IMAGE} cannot be written (Windows error $0)."
  ${EndIf}
  !insertmacro Print "The ${NAME} is running."
  MessageBox MB_RETRYCANCEL|MB_ICONQUESTION "The ${NAME} is running.$\n$\nClose it, also where other users are logged on, then choose Retry." /SD IDCANCEL IDRETRY again
  SetErrorLevel ${EXIT_RUNNING}
  Quit
FunctionEnd

; Deletes the installer's own files in the folder $R0, and the folder when nothing else is in it. korsa.ini is in the
; state $R1. Out: $0 0 when the program is still there.
Function ${un}RemoveFiles
  ${If} $R1 != "changed"
    Delete "$R0\korsa.ini"
  ${EndIf}
  Delete "$R0\${IMAGE}"
  StrCpy $0 1
  ${If} ${FileExists} "$R0\${IMAGE}"
    StrCpy $0 0
    Return
  ${EndIf}
  Delete "$R0\${UNINSTALLER}"
  RMDir $R0
  ${If} $R0 == "$PROGRAMFILES32\${TAVREL_PRODUCT}\${TAVREL_FOLDER}"
    RMDir "$PROGRAMFILES32\${TAVREL_PRODUCT}"
  ${EndIf}
FunctionEnd
!macroend
!insertmacro Common ""
!insertmacro Common "un."

; Chooses $INSTDIR: the folder of /D=, else of the installed utility, else of the product, else the default folder.
Function .onInit
  SetShellVarContext all
  Call CheckCommandLine
  Call RequireRights
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR HKLM "${ENTRY}" "InstallLocation"
  ${EndIf}
  ${If} $INSTDIR == ""
    ReadRegStr $INSTDIR HKLM "Software\${TAVREL_MAKER}\${TAVREL_PRODUCT}\${TAVREL_PRODUCT_VERSION}" "Installpath"
    ${IfNot} ${FileExists} "$INSTDIR\*.*"
      StrCpy $INSTDIR ""
    ${EndIf}
  ${EndIf}
  ${If} $INSTDIR == ""
    StrCpy $INSTDIR "$PROGRAMFILES32\${TAVREL_PRODUCT}\${TAVREL_FOLDER}"
  ${EndIf}
FunctionEnd

; One uninstall entry means one installation: installing in another folder moves it.
Function FindOldFolder
  ReadRegStr $OldFolder HKLM "${ENTRY}" "InstallLocation"
  ${If} $OldFolder == $INSTDIR
  ${OrIfNot} ${FileExists} "$OldFolder\${IMAGE}"
    StrCpy $OldFolder ""
    Return
  ${EndIf}
  StrCpy $R0 $OldFolder
  Call WaitForUtility
  Call ReadSeedState
  StrCpy $OldSeed $0
FunctionEnd

; Replaces a file in $INSTDIR by NAME.new beside it, in one step. Sets $0 to 0 when that fails.
!macro Replace name
  SetFileAttributes "$INSTDIR\${name}" NORMAL
  System::Call 'kernel32::MoveFileExW(w "$INSTDIR\${name}.new", w "$INSTDIR\${name}", i 1) i .r0' ; MOVEFILE_REPLACE_EXISTING
!macroend

; The new files are complete before the first of them replaces an old one, so a full disk damages no installation.
Function CopyProgram
  ${If} $OldFolder != ""
    Delete "$OldFolder\${IMAGE}.new"
  ${EndIf}
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
    !insertmacro Replace "${IMAGE}"
    ${If} $0 <> 0
      !insertmacro Replace "${UNINSTALLER}"
    ${EndIf}
  ${EndIf}
  ${If} $0 = 0
    Delete "$INSTDIR\${IMAGE}.new"
    Delete "$INSTDIR\${UNINSTALLER}.new"
    SetOutPath $TEMP
    Call RemoveMadeFolders
    !insertmacro Fail ${EXIT_FAILED} "The files cannot be written to $INSTDIR."
  ${EndIf}
FunctionEnd

; The product can have a shortcut of that name: it stays, and is not recorded.
Function AddToStartMenu
  StrCpy $5 "$SMPROGRAMS\${TAVREL_PRODUCT}\${TAVREL_PRODUCT_LABEL} Update.lnk"
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 != $5
  ${AndIf} ${FileExists} $5
    Return
  ${EndIf}
  CreateDirectory "$SMPROGRAMS\${TAVREL_PRODUCT}"
  CreateShortCut $5 "$INSTDIR\${IMAGE}"
  WriteRegStr HKLM "${ENTRY}" "StartMenuEntry" $5
FunctionEnd

Function Register
  WriteRegStr HKLM "${ENTRY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${ENTRY}" "DisplayVersion" "${VERSION}"
  WriteRegDWORD HKLM "${ENTRY}" "VersionMajor" ${VERSION_MAJOR}
  WriteRegDWORD HKLM "${ENTRY}" "VersionMinor" ${VERSION_MINOR}
  WriteRegStr HKLM "${ENTRY}" "DisplayIcon" "$INSTDIR\${IMAGE}"
  WriteRegStr HKLM "${ENTRY}" "Publisher" "${TAVREL_MAKER}"
  WriteRegStr HKLM "${ENTRY}" "HelpLink" "${TAVREL_SUPPORT}"
  WriteRegStr HKLM "${ENTRY}" "InstallLocation" $INSTDIR
  WriteRegStr HKLM "${ENTRY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr HKLM "${ENTRY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
  SectionGetSize 0 $0
  WriteRegDWORD HKLM "${ENTRY}" "EstimatedSize" $0
  WriteRegDWORD HKLM "${ENTRY}" "NoModify" 1
  WriteRegDWORD HKLM "${ENTRY}" "NoRepair" 1
FunctionEnd

Section
  ; The size, in KiB, of the files that the functions write.
  AddSize ${SIZE}
  StrCpy $R0 $INSTDIR
  Call WaitForUtility
  Call FindOldFolder
  Call PrepareLogFolder
  StrCpy $R0 $INSTDIR
  Call CreateProgramFolder
  ${If} $0 <> 0
    Call RemoveMadeFolders
    !insertmacro Fail ${EXIT_FAILED} "The folder $INSTDIR cannot be created (Windows error $0)."
  ${EndIf}
  Call CopyProgram
  Call CopySeed
  Call AddToStartMenu
  Call Register
  ${If} $OldFolder != ""
    StrCpy $R0 $OldFolder
    StrCpy $R1 $OldSeed
    Call RemoveFiles
    ${If} $0 = 0
      !insertmacro Fail ${EXIT_FAILED} "The utility is installed in $INSTDIR, but $OldFolder\${IMAGE} cannot be removed."
    ${EndIf}
  ${EndIf}
SectionEnd

Function un.onInit
  SetShellVarContext all
  Call un.CheckCommandLine
  Call un.RequireRights
FunctionEnd

Section Uninstall
  StrCpy $R0 $INSTDIR
  Call un.WaitForUtility
  Call un.ReadSeedState
  StrCpy $R1 $0
  Call un.RemoveFiles
  ${If} $0 = 0
    !insertmacro Fail ${EXIT_FAILED} "$INSTDIR\${IMAGE} cannot be removed."
  ${EndIf}
  ReadRegStr $0 HKLM "${ENTRY}" "StartMenuEntry"
  ${If} $0 != ""
    Delete $0
    RMDir "$SMPROGRAMS\${TAVREL_PRODUCT}"
  ${EndIf}
  ; Logs stay.
  Delete "$APPDATA\${TAVREL_PRODUCT}\${TAVREL_FOLDER}\${NOTICE}"
  RMDir "$APPDATA\${TAVREL_PRODUCT}\${TAVREL_FOLDER}"
  RMDir "$APPDATA\${TAVREL_PRODUCT}"
  DeleteRegKey HKLM "${ENTRY}"
SectionEnd
