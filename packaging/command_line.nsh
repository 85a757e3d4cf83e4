; The command line of installer and uninstaller. NSIS ignores unknown options, and an unsuitable folder after /D=. An
; unattended script would then wait for a window, or install in another folder.

!define USAGE "Usage: setup.exe [/S] [/D=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
/D=FOLDER$\tinstalls there; the last option, an absolute path without quotes$\r$\n$\r$\n\
Exit code: 0 done, 1 cancelled, 2 failed or wrong use, 3 the utility is running, 4 no administrator."
!define UN_USAGE "Usage: ${UNINSTALLER} [/S] [_?=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
_?=FOLDER$\tthe folder of the utility, without quotes, last: the uninstaller waits for the end and stays there"

; Writes a line to standard output, if there is one: a file, a pipe or the console of the caller. $0 is 0 when not.
!macro Print text
  System::Call 'kernel32::GetStdHandle(i -11) p .r0' ; STD_OUTPUT_HANDLE
  ${If} $0 = 0
    System::Call 'kernel32::AttachConsole(i -1) i .r0' ; ATTACH_PARENT_PROCESS
    ${If} $0 <> 0
      System::Call 'kernel32::GetStdHandle(i -11) p .r0'
    ${EndIf}
  ${EndIf}
  ${If} $0 <> 0
    FileWrite $0 "${text}$\r$\n"
  ${EndIf}
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
    ${ElseIf} $R1 == "/?"
    ${OrIf} $R1 == "-?"
    ${OrIf} $R1 == "/h"
    ${OrIf} $R1 == "-h"
    ${OrIf} $R1 == "/help"
    ${OrIf} $R1 == "--help"
      !insertmacro Print "${usage}"
      ${If} $0 = 0
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

; NSIS leaves $INSTDIR empty when $R1 is not absolute or is a file, and removes characters that no path holds.
Function CheckFolder
  ${Do}
    StrCpy $0 $R1 1 -1
    ${If} $0 != " "
    ${AndIf} $0 != "\"
      ${Break}
    ${EndIf}
    StrCpy $R1 $R1 -1
  ${Loop}
  ${If} $R1 == ""
  ${OrIf} $R1 != $INSTDIR
    !insertmacro WrongUse "/D= takes the absolute path of a folder, without quotes: $R1"
  ${EndIf}
FunctionEnd

; NSIS has taken the folder after _?= already.
Function un.CheckFolder
FunctionEnd

!insertmacro CommandLine "" "/D=" "${USAGE}"
!insertmacro CommandLine "un." "_?=" "${UN_USAGE}"
