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

; Writes the text on the stack and a line end to standard output: a file, a pipe or the console of the caller. Explorer
; gives programs a standard output that is no file, and GetFileType then returns 0. Changes no other variable.
!macro PrintFunction un
Function ${un}Print
  System::Store S
  Pop $0
  StrCpy $Printed 0
  System::Call 'kernel32::GetStdHandle(i -11) p .r1' ; STD_OUTPUT_HANDLE
  System::Call 'kernel32::GetFileType(p r1) i .r2'
  ${If} $2 = 0
    System::Call 'kernel32::AttachConsole(i -1)' ; ATTACH_PARENT_PROCESS
    System::Call 'kernel32::GetStdHandle(i -11) p .r1'
    System::Call 'kernel32::GetFileType(p r1) i .r2'
  ${EndIf}
  ${If} $2 <> 0
    FileWrite $1 "$0$\r$\n"
    StrCpy $Printed 1
  ${EndIf}
  System::Store L
FunctionEnd
!macroend
!insertmacro PrintFunction ""
!insertmacro PrintFunction "un."

!macro Print text
  Push "${text}"
  !ifdef __UNINSTALL__
    Call un.Print
  !else
    Call Print
  !endif
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
; $R0: what is still to be read. $R1: the word.
Function ${un}CheckCommandLine
  System::Call 'kernel32::GetCommandLineW() p .r0'
  System::Call 'shlwapi::PathGetArgsW(p r0) w .R0'
  ${Do}
    StrCpy $R1 ""
    ${Do}
      StrCpy $0 $R0 1
      StrCpy $R0 $R0 "" 1
      ${If} $0 == ""
      ${OrIf} $0 == " "
        ${Break}
      ${EndIf}
      StrCpy $R1 "$R1$0"
    ${Loop}
    StrCpy $1 $R1 3
    StrCpy $2 $R1 4
    ${If} $R1 == ""
      ${If} $0 == ""
        ${Break}
      ${EndIf}
    ${ElseIf} $R1 S== "/S"
    ${OrIf} $R1 S== "/NCRC"
      ; NSIS has acted on them.
    ${ElseIf} $1 S== "${last}"
      StrCpy $R1 "$R1 $R0" "" 3
      Call ${un}CheckFolder
      ${Break}
    ${ElseIf} $2 S== '"_?='
      ; NSIS ignores it in quotes, and has started a copy of the uninstaller without it.
      ${Break}
    ${ElseIf} $R1 == "/?"
    ${OrIf} $R1 == "/help"
    ${OrIf} $R1 == "--help"
      !insertmacro Print "${usage}"
      ${If} $Printed = 0
        MessageBox MB_OK|MB_ICONINFORMATION "${usage}" /SD IDOK
      ${EndIf}
      SetErrorLevel 0
      Quit
    ${Else}
      !insertmacro WrongUse "Unknown option: $R1. /? shows the options."
    ${EndIf}
  ${Loop}
FunctionEnd
!macroend

; NSIS leaves $INSTDIR empty when it does not accept the folder $R1, and removes characters that no path holds.
Function CheckFolder
  ${Do}
    StrCpy $0 $R1 1 -1
    ${If} $0 != " "
    ${AndIf} $0 != "\"
      ${Break}
    ${EndIf}
    StrCpy $R1 $R1 -1
  ${Loop}
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
