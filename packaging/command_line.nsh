; The command line of installer and uninstaller. NSIS ignores unknown options, and an unsuitable folder after /D=. An
; unattended script would then wait for a window, or install in another folder.

!define USAGE "Usage: setup.exe [/S] [/D=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
/D=FOLDER$\tinstalls there; the last option, the full path, with backslashes and without quotes$\r$\n$\r$\n\
Exit code: 0 done, 1 cancelled, 2 failed or wrong use, 3 the utility is running, 4 no administrator."
!define UN_USAGE "Usage: ${UNINSTALLER} [/S] [_?=FOLDER]$\r$\n$\r$\n\
/S$\tasks nothing and shows no window$\r$\n\
_?=FOLDER$\tthe folder of the utility, without quotes, last: the uninstaller waits for the end and stays there"

; What Print writes.
Var Message

; Writes a line to standard output: a file, a pipe or the console of the caller. Explorer gives programs a standard
; output that is none of these. Sets the error flag when there is no such output. Changes $0 and $Message.
!macro Print text
  StrCpy $Message "${text}"
  ClearErrors
  System::Call 'kernel32::GetStdHandle(i -11) p .r0' ; STD_OUTPUT_HANDLE
  FileWrite $0 "$Message$\r$\n"
  ${If} ${Errors}
    System::Call 'kernel32::AttachConsole(i -1)' ; ATTACH_PARENT_PROCESS
    System::Call 'kernel32::GetStdHandle(i -11) p .r0'
    FileWrite $0 "$Message$\r$\n"
  ${EndIf}
!macroend

; Ends the program with an exit code and the reason.
!macro Fail code text
  !insertmacro Print "${text}"
  MessageBox MB_OK|MB_ICONSTOP $Message /SD IDOK
  SetErrorLevel ${code}
  Quit
!macroend

; The beginning of .onInit and un.onInit. Out: $R0 the last option, which begins with ${last}, or "".
!macro CheckStart last usage
  SetShellVarContext all
  ; $CMDLINE ends before /D= and _?=.
  System::Call 'kernel32::GetCommandLineW() p .r0'
  System::Call 'shlwapi::PathGetArgsW(p r0) w .R0'
  System::Call 'shlwapi::StrTrimW(w R0R0, w " ")'
  StrCpy $0 "$R0 " 3
  ${If} $0 S== "/S " ; NSIS has acted on it.
    StrCpy $R0 $R0 "" 3
    System::Call 'shlwapi::StrTrimW(w R0R0, w " ")'
  ${EndIf}
  StrCpy $0 $R0 3
  StrCpy $1 $R0 4
  ${If} $R0 == "/?"
  ${OrIf} $R0 == "--help"
    !insertmacro Print "${usage}"
    ${If} ${Errors}
      MessageBox MB_OK|MB_ICONINFORMATION $Message /SD IDOK
    ${EndIf}
    SetErrorLevel 0
    Quit
  ${ElseIf} $R0 != ""
  ${AndIf} $0 S!= "${last}"
  ${AndIf} $1 S!= '"_?=' ; NSIS ignores it in quotes, and has started a copy of the uninstaller without it.
    SetSilent silent ; An unattended script may have forgotten /S.
    !insertmacro Fail ${EXIT_FAILED} "Unknown option: $R0. /? alone shows the options."
  ${EndIf}
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    !insertmacro Fail ${EXIT_RIGHTS} "Only an administrator can install or remove the ${NAME}."
  ${EndIf}
!macroend
