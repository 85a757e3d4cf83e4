; Creates folders with explicit rights. Functions take their values in $6 (a handle), $R0 (a path), $R1 and $R2; $0 to $3
; are scratch. System::Call writes types as: i number, p address, w text, r1 or R1 the variable $1 or $R1, a dot before a
; result.

!define LOG_PARENT "$APPDATA\${TAVREL_PRODUCT}"
!define LOG_FOLDER "${LOG_PARENT}\${TAVREL_FOLDER}"
!define NOTICE "${LOG_FOLDER}\README.txt"

; Access lists: SY the system, BA administrators, BU ordinary users, CO who makes a folder or file in it.
; Folders of the program: users read and execute.
!define PROGRAM_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"
; The log folder while it is prepared.
!define CLOSED_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"
; The folder above it, which the product may use too: users may add files and folders, as in ProgramData, and control
; those that they added. They may not delete or rename those of others.
!define PARENT_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;CI;0x6;;;BU)(A;OICIIO;GA;;;CO)"
; cmake/product.cmake has the rights that deploy.ps1 gives too.

Var LogHandle
Var ParentHandle

; In: $R1 rights. Out: $1 a security descriptor, $2 SECURITY_ATTRIBUTES with it. The installer frees no memory, because
; it ends soon.
Function MakeRights
  System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(w R1, i 1, *p .r1, p 0) i .r0'
  ${If} $0 = 0
    !insertmacro Fail ${EXIT_FAILED} "Windows refuses the rights $R1."
  ${EndIf}
  System::Call '*(i 12, p r1, i 0) p .r2'
FunctionEnd

; Creates the folder $R0 with the rights $R1 from the start. Out: $3 0 when that fails, and $0 the Windows error code.
Function CreateFolder
  Call MakeRights
  System::Call 'kernel32::CreateDirectoryW(w R0, p r2) i .r3 ? e'
  Pop $0
FunctionEnd

; Creates the highest missing folder of $INSTDIR. It gets its own rights, which the folders below it inherit, because
; outside Program Files a new folder inherits write access for every user. Out: $R0 this folder, or "".
Function CreateProgramFolder
  StrCpy $R0 ""
  StrCpy $0 $INSTDIR
  ${DoUntil} ${FileExists} "$0\*.*"
    StrCpy $R0 $0
    ${GetParent} $0 $0
  ${Loop}
  ${If} $R0 != ""
    StrCpy $R1 "${PROGRAM_RIGHTS}"
    Call CreateFolder
    ${If} $3 = 0
      !insertmacro Fail ${EXIT_FAILED} "The folder $R0 cannot be created (Windows error $0)."
    ${EndIf}
  ${EndIf}
FunctionEnd

; Sets owner and access list $R1 of the open folder $6, whose path is $R0, but not of its files. (SetSecurityInfo would
; change the files too, and with them the targets of hard links.)
Function SetRights
  Call MakeRights
  ; OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION
  System::Call 'advapi32::SetKernelObjectSecurity(p r6, i 0x80000005, p r1) i .r0'
  ${If} $0 = 0
    !insertmacro Fail ${EXIT_FAILED} "The rights on $R0 cannot be set."
  ${EndIf}
FunctionEnd

; Ends the installer when the open file or folder $6, whose path is $R0, is a link. Out: $2 its attributes.
Function RefuseLink
  ; BY_HANDLE_FILE_INFORMATION begins with the attributes.
  System::Call '*(i -1, &v48) p .r1'
  System::Call 'kernel32::GetFileInformationByHandle(p r6, p r1)'
  System::Call '*$1(i .r2)'
  ; Wine reports the attribute of a link only for a path, not for an open handle.
  System::Call 'kernel32::GetFileAttributesW(w R0) i .r3'
  IntOp $3 $3 | $2
  ${If} $3 & 0x400 ; FILE_ATTRIBUTE_REPARSE_POINT
    !insertmacro Fail ${EXIT_FAILED} "$R0 leads to another folder. Remove it, then install again."
  ${EndIf}
FunctionEnd

; Opens the file or folder $R0 itself, not the target of a link of that name, with the access $R2. If $R2 has
; FILE_LIST_DIRECTORY, no other process can write to, rename or delete the folder until the handle is closed. Out: $0 0
; when that fails, or when it belongs neither to administrators, the system nor the account that runs the installer; else $6
; the handle and $2 the attributes.
Function Open
  ; FILE_SHARE_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT
  System::Call 'kernel32::CreateFileW(w R0, i R2, i 1, p 0, i 3, i 0x02200000, p 0) p .r6 ? e'
  Pop $0
  ${If} $6 = -1
    ${If} $0 = 32 ; ERROR_SHARING_VIOLATION
      !insertmacro Fail ${EXIT_FAILED} "Another program has opened $R0 for writing. Restart Windows, then install again."
    ${EndIf}
    StrCpy $0 0
    Return
  ${EndIf}
  Call RefuseLink
  System::Call 'advapi32::GetSecurityInfo(p r6, i 1, i 1, *p .r1, p 0, p 0, p 0, *p .r3)'
  System::Call 'advapi32::IsWellKnownSid(p r1, i 26) i .r0' ; WinBuiltinAdministratorsSid
  ${If} $0 = 0
    System::Call 'advapi32::IsWellKnownSid(p r1, i 22) i .r0' ; WinLocalSystemSid
  ${EndIf}
  ${If} $0 = 0
    ; The owner of a folder that this process has made.
    System::Call 'advapi32::GetNamedSecurityInfoW(w "$PLUGINSDIR", i 1, i 1, *p .r3, p 0, p 0, p 0, *p .r4)'
    System::Call 'advapi32::EqualSid(p r1, p r3) i .r0'
  ${EndIf}
  ${If} $0 = 0
    System::Call 'kernel32::CloseHandle(p r6)'
  ${EndIf}
FunctionEnd

; Creates and opens the folder $R0. Any user can create folders in ProgramData: an empty one of another account is
; replaced, because that account could still have it open; one with content is refused. Out: $6 the handle.
Function TakeFolder
  StrCpy $R1 "${CLOSED_RIGHTS}"
  ; READ_CONTROL | WRITE_DAC | WRITE_OWNER | FILE_READ_ATTRIBUTES | FILE_LIST_DIRECTORY
  StrCpy $R2 0xE0081
  Call CreateFolder
  Call Open
  ${If} $0 = 0
    RMDir "$R0\${TAVREL_FOLDER}"
    RMDir $R0
    Call CreateFolder
    Call Open
  ${EndIf}
  ${If} $0 = 0
  ${OrIfNot} $2 & 0x10 ; FILE_ATTRIBUTE_DIRECTORY
    !insertmacro Fail ${EXIT_FAILED} "$R0 is not a folder of the administrators. Remove it, or if you trust its content run takeown /a /f $R0. Then install again."
  ${EndIf}
FunctionEnd

; Writes the notice, unless there is one of the administrators.
Function PrepareNotice
  StrCpy $R0 "${NOTICE}"
  StrCpy $R2 0x20080 ; READ_CONTROL | FILE_READ_ATTRIBUTES: no other process can prevent these
  Call Open
  ${If} $0 <> 0
    System::Call 'kernel32::CloseHandle(p r6)'
    Return
  ${EndIf}
  Delete $R0
  StrCpy $R1 "${TAVREL_NOTICE_RIGHTS}"
  Call MakeRights
  ; GENERIC_WRITE, not shared, CREATE_NEW, FILE_ATTRIBUTE_NORMAL
  System::Call 'kernel32::CreateFileW(w R0, i 0x40000000, i 0, p r2, i 1, i 0x80, p 0) p .r0'
  ${If} $0 = -1
    !insertmacro Fail ${EXIT_FAILED} "$R0 cannot be written."
  ${EndIf}
  FileWrite $0 "Logs of the ${NAME}.$\r$\n"
  FileWrite $0 "Leave this file here: a folder that is not empty cannot become a link to another one.$\r$\n"
  FileClose $0
FunctionEnd

; Prepares the log folder. Its rights are opened to users last, when it holds a file that they cannot delete: a user
; who may create files in an empty folder may also turn it into a junction.
Function PrepareLogFolder
  StrCpy $R0 "${LOG_PARENT}"
  Call TakeFolder
  StrCpy $ParentHandle $6
  StrCpy $R0 "${LOG_FOLDER}"
  Call TakeFolder
  StrCpy $LogHandle $6
  ; Users may create files in the log folder: those stay.
  FindFirst $1 $0 "${LOG_FOLDER}\*"
  ${DoUntil} $0 == ""
    System::Call 'kernel32::GetFileAttributesW(w "${LOG_FOLDER}\$0") i .r2'
    ${If} $2 & 0x410 ; FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY
    ${AndIf} $0 != "."
    ${AndIf} $0 != ".."
      !insertmacro Fail ${EXIT_FAILED} "${LOG_FOLDER}\$0 is a folder or a link. Remove it, then install again."
    ${EndIf}
    FindNext $1 $0
  ${Loop}
  FindClose $1
  StrCpy $R1 "${CLOSED_RIGHTS}"
  Call SetRights
  Call PrepareNotice
  ; From now on no folder can become a link, because both have content.
  StrCpy $6 $ParentHandle
  StrCpy $R0 "${LOG_PARENT}"
  Call RefuseLink
  StrCpy $R1 "${PARENT_RIGHTS}"
  Call SetRights
  StrCpy $6 $LogHandle
  StrCpy $R0 "${LOG_FOLDER}"
  Call RefuseLink
  StrCpy $R1 "${TAVREL_LOG_RIGHTS}"
  Call SetRights
  System::Call 'kernel32::CloseHandle(p $LogHandle)'
  System::Call 'kernel32::CloseHandle(p $ParentHandle)'
FunctionEnd
