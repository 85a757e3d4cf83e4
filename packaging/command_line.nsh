; The command line of installer and uninstaller. NSIS ignores unknown options, and an unsuitable folder after /D=. An
; unattended script would then wait for a window, or install in another folder.

!define USAGE "Usage: setup.exe [/S] [/D=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
/D=FOLDER$\tinstalls there; the last option, the full path, with backslashes and without quotes$\r$\n$\r$\n\
Exit code: 0 done, 1 cancelled, 2 failed or wrong use, 3 the utility is running, 4 no administrator."
!define UN_USAGE "Usage: ${UNINSTALLER} [/S] [_?=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
_?=FOLDER$\tthe folder of the utility, without quotes, last: the uninstaller waits for the end and stays there"

; 1 when the last Print found a standard output.
Var Printed

; Writes a line to standard output: a file, a pipe or the console of the caller. Explorer gives programs a standard
; output that is no file: GetFileType returns 0. Changes no variable but $Printed.
!macro Print text
  Push "${text}$\r$\n"
  System::Store S
  Pop $0
  System::Call 'kernel32::GetStdHandle(i -11) p .r1' ; STD_OUTPUT_HANDLE
  System::Call 'kernel32::GetFileType(p r1) i .r2'
  ${If} $2 = 0
    System::Call 'kernel32::AttachConsole(i -1)' ; ATTACH_PARENT_PROCESS
    System::Call 'kernel32::GetStdHandle(i -11) p .r1'
    System::Call 'kernel32::GetFileType(p r1) i .r2'
  ${EndIf}
  StrCpy $Printed 0
  ${If} $2 <> 0
    FileWrite $1 $0
    StrCpy $Printed 1
  ${EndIf}
  System::Store L
!macroend

!macro WrongUse text
  !insertmacro Print "${text}"
  SetErrorLevel ${EXIT_FAILED}
  Quit
!macroend

; Ends the program with an exit code and the reason.
!macro Fail code text
  !insertmacro Print "${text}"
  MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
  SetErrorLevel ${code}
  Quit
!macroend

!macro CommandLine un last usage
; $R0: what is still to be read.
Function ${un}CheckCommandLine
  ; $CMDLINE ends before /D= and _?=.
  System::Call 'kernel32::GetCommandLineW() p .r0'
  System::Call 'shlwapi::PathGetArgsW(p r0) w .R0'
  ${Do}
    System::Call 'shlwapi::StrTrimW(w R0R0, w " ")'
    StrCpy $0 "$R0 " 3
    StrCpy $1 "$R0 " 6
    StrCpy $2 $R0 4
    ${If} $R0 == ""
      ${Break}
    ${ElseIf} $R0 == "/?"
    ${OrIf} $R0 == "--help"
      !insertmacro Print "${usage}"
      ${If} $Printed = 0
        MessageBox MB_OK|MB_ICONINFORMATION "${usage}" /SD IDOK
      ${EndIf}
      SetErrorLevel 0
      Quit
    ${ElseIf} $0 S== "${last}"
      StrCpy $R1 $R0 "" 3
      Call ${un}CheckFolder
      ${Break}
    ${ElseIf} $2 S== '"_?='
      ; NSIS ignores it in quotes, and has started a copy of the uninstaller without it.
      ${Break}
    ${ElseIf} $0 S== "/S " ; NSIS has acted on this and the next one.
      StrCpy $R0 $R0 "" 3
    ${ElseIf} $1 S== "/NCRC "
      StrCpy $R0 $R0 "" 6
    ${Else}
      !insertmacro WrongUse "Unknown option: $R0. /? alone shows the options."
    ${EndIf}
  ${Loop}
FunctionEnd
!macroend

; NSIS leaves $INSTDIR empty when it does not accept the folder $R1, and removes characters that no path holds.
Function CheckFolder
  System::Call 'shlwapi::PathRemoveBackslashW(w R1R1)'
  ${If} $R1 != ""
  ${AndIf} $R1 == $INSTDIR
    Return
  ${EndIf}
  ${GetRoot} $R1 $0
  System::Call 'kernel32::GetFileAttributesW(w "$0\") i .r1'
  ${If} $0 != ""
  ${AndIf} $1 = -1
    !insertmacro WrongUse "The drive or network folder $0 does not exist: /D=$R1"
  ${EndIf}
  !insertmacro WrongUse "/D= takes the full path of a folder, with backslashes, without quotes, and not below a file: $R1"
FunctionEnd

; NSIS has taken the folder after _?= already.
Function un.CheckFolder
FunctionEnd

!insertmacro CommandLine "" "/D=" "${USAGE}"
!insertmacro CommandLine "un." "_?=" "${UN_USAGE}"
