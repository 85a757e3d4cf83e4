; korsa.ini in the folder of the utility: the installer places it, and each user's first start copies it.

; State of korsa.ini in $OldFolder: none, installed (unchanged since), changed, taken (already copied to $INSTDIR).
Var OldSeed

; Out: $0 the state of korsa.ini in the folder $R0 (see $OldSeed), $1 when it was last written.
!macro ReadSeedState un
Function ${un}ReadSeedState
  StrCpy $0 "none"
  ClearErrors
  GetFileTime "$R0\korsa.ini" $2 $3
  ${IfNot} ${Errors}
    StrCpy $0 "changed"
    StrCpy $1 "$2 $3"
    ReadRegStr $2 HKLM "${ENTRY}" "SeedWritten"
    ${If} $1 == $2
      StrCpy $0 "installed"
    ${EndIf}
  ${EndIf}
FunctionEnd
!macroend
!insertmacro ReadSeedState ""
!insertmacro ReadSeedState "un."

; A korsa.ini that was changed since it was installed, or that an administrator placed, is kept. A move takes it along.
Function CopySeed
  StrCpy $R0 $INSTDIR
  Call ReadSeedState
  ${If} $0 == "none"
  ${AndIf} $OldFolder != ""
  ${AndIf} $OldSeed == "changed"
    System::Call 'kernel32::CopyFileW(w "$OldFolder\korsa.ini", w "$INSTDIR\korsa.ini", i 1) i .r0'
    ${If} $0 = 0
      !insertmacro Fail ${EXIT_FAILED} "$OldFolder\korsa.ini cannot be copied to $INSTDIR."
    ${EndIf}
    StrCpy $OldSeed "taken"
  ${ElseIf} $0 != "changed"
    ClearErrors
    File "/oname=korsa.ini" "${SEED}"
    ${If} ${Errors}
      !insertmacro Fail ${EXIT_FAILED} "korsa.ini cannot be written to $INSTDIR."
    ${EndIf}
    Call ReadSeedState
    WriteRegStr HKLM "${ENTRY}" "SeedWritten" $1
  ${EndIf}
FunctionEnd
