; Creates folders with explicit rights. Values are passed in $R0 and $R1, results in $0; $1 to $6 are scratch.
; System::Call writes types as: i number, p address, w text, r1 or R1 the variable $1 or $R1, a dot before a result.

!define NOTICE "README.txt"

; Access lists, in the order of this file: SY the system, BA administrators, BU ordinary users, S-1-3-4 a file's owner.
; Folders of the program: users read and execute.
!define PROGRAM_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"
; The log folder while it is prepared.
!define CLOSED_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)"
; The folder above it, which the product may use too: users may add files and folders, as in ProgramData, and control
; those that they added. They may not delete or rename those of others.
!define PARENT_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;CI;0x6;;;BU)(A;OICIIO;GA;;;CO)"
; The log folder: users list it and create files (0x1200ab), but no folders. They read and write all files, and only
; administrators delete a file or change its rights (0x12019f = FILE_GENERIC_READ | FILE_GENERIC_WRITE). The right to
; append is not enough: the utility opens its log with GENERIC_WRITE and cuts off an entry that did not fit on the disk.
!define LOG_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;;0x1200ab;;;BU)(A;OIIO;0x12019f;;;BU)(A;OIIO;0x12019f;;;S-1-3-4)"
!define NOTICE_RIGHTS "O:BAD:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x120089;;;BU)"

; The lowest folder that CreateProgramFolder has made, and how many it has made: this one and those above it.
Var MadeFolder
Var MadeFolders
Var LogFolder
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

; Creates the folder $R0 with the rights $R1 from the start. Out: $0 0 or a Windows error code.
Function CreateFolder
  Call MakeRights
  System::Call 'kernel32::CreateDirectoryW(w R0, p r2) i .r3 ? e'
  Pop $0
  ${If} $3 <> 0
    StrCpy $0 0
  ${EndIf}
FunctionEnd

; Creates the folder $R0 and the missing ones above it. Each gets its own rights, because outside Program Files a new
; folder inherits write access for every user. Out: $0 0 or a Windows error code.
Function CreateProgramFolder
  ${If} ${FileExists} "$R0\*.*"
    StrCpy $0 0
    Return
  ${EndIf}
  Push $R0
  ${GetParent} $R0 $R0
  ${If} $R0 == ""
    StrCpy $0 3 ; ERROR_PATH_NOT_FOUND
  ${Else}
    Call CreateProgramFolder
  ${EndIf}
  Pop $R0
  ${If} $0 = 0
    StrCpy $R1 "${PROGRAM_RIGHTS}"
    Call CreateFolder
    ${If} $0 = 0
      StrCpy $MadeFolder $R0
      IntOp $MadeFolders $MadeFolders + 1
    ${EndIf}
  ${EndIf}
FunctionEnd

; After a failure: removes the folders that CreateProgramFolder has made, if they are empty.
Function RemoveMadeFolders
  ${DoWhile} $MadeFolders > 0
    RMDir $MadeFolder
    ${GetParent} $MadeFolder $MadeFolder
    IntOp $MadeFolders $MadeFolders - 1
  ${Loop}
FunctionEnd

; Sets owner and access list of the open folder $R0 but not of its files. (SetSecurityInfo would change the files too,
; and with them the targets of hard links.)
Function SetRights
  Call MakeRights
  ; OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION
  System::Call 'advapi32::SetKernelObjectSecurity(p R0, i 0x80000005, p r1) i .r0'
  ${If} $0 = 0
    !insertmacro Fail ${EXIT_FAILED} "The rights on $LogFolder or on the folder above it cannot be set."
  ${EndIf}
FunctionEnd

; Out: $0 1 when the open object $R0 belongs to administrators, the system or the account that runs the installer.
Function IsOwnedByAdministrators
  StrCpy $0 0
  System::Call 'advapi32::GetSecurityInfo(p R0, i 1, i 1, *p .r1, p 0, p 0, p 0, *p .r2) i .r3'
  ${If} $3 <> 0
    Return
  ${EndIf}
  System::Call 'advapi32::IsWellKnownSid(p r1, i 26) i .r0' ; WinBuiltinAdministratorsSid
  ${If} $0 = 0
    System::Call 'advapi32::IsWellKnownSid(p r1, i 22) i .r0' ; WinLocalSystemSid
  ${EndIf}
  ${If} $0 = 0
    ; The owner of a folder that this process has made.
    System::Call 'advapi32::GetNamedSecurityInfoW(w "$PLUGINSDIR", i 1, i 1, *p .r4, p 0, p 0, p 0, *p .r5)'
    System::Call 'advapi32::EqualSid(p r1, p r4) i .r0'
  ${EndIf}
FunctionEnd

; Out: $2 the attributes of the open file or folder $6, whose path is $R0.
Function ReadAttributes
  System::Alloc 52 ; BY_HANDLE_FILE_INFORMATION begins with the attributes
  Pop $1
  StrCpy $2 0
  System::Call 'kernel32::GetFileInformationByHandle(p r6, p r1) i .r0'
  ${If} $0 <> 0
    System::Call '*$1(i .r2)'
  ${EndIf}
  ; Wine reports the attribute of a link only for a path, not for an open handle.
  System::Call 'kernel32::GetFileAttributesW(w R0) i .r3'
  IntOp $3 $3 & 0x400 ; FILE_ATTRIBUTE_REPARSE_POINT
  IntOp $2 $2 | $3
FunctionEnd

; Opens the file or folder $R0 itself, not the target of a link of that name, with the access $R2. $R3: 0x10 for a
; folder, 0 for a file. If $R2 has FILE_LIST_DIRECTORY, no other process can write to, rename or delete the folder until
; the handle is closed. Out: $0 the handle, or "link", or "busy", or "foreign": not of that kind, or not of administrators.
Function Open
  ; FILE_SHARE_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT
  System::Call 'kernel32::CreateFileW(w R0, i R2, i 1, p 0, i 3, i 0x02200000, p 0) p .r6 ? e'
  Pop $0
  ${If} $6 = -1
    ${If} $0 = 32 ; ERROR_SHARING_VIOLATION
      StrCpy $0 "busy"
    ${Else}
      StrCpy $0 "foreign"
    ${EndIf}
    Return
  ${EndIf}
  Call ReadAttributes
  IntOp $3 $2 & 0x400
  IntOp $2 $2 & 0x10 ; FILE_ATTRIBUTE_DIRECTORY
  ${If} $3 <> 0
    StrCpy $0 "link"
  ${ElseIf} $2 <> $R3
    StrCpy $0 "foreign"
  ${Else}
    Push $R0
    StrCpy $R0 $6
    Call IsOwnedByAdministrators
    Pop $R0
    ${If} $0 = 0
      StrCpy $0 "foreign"
    ${Else}
      StrCpy $0 $6
      Return
    ${EndIf}
  ${EndIf}
  System::Call 'kernel32::CloseHandle(p r6)'
FunctionEnd

; Creates and opens the folder $R0. Any user can create folders in ProgramData: an empty one of another account is
; replaced, because that account could still have it open; one with content is refused. Out: $0 the handle.
Function TakeFolder
  StrCpy $R1 "${CLOSED_RIGHTS}"
  ; READ_CONTROL | WRITE_DAC | WRITE_OWNER | FILE_READ_ATTRIBUTES | FILE_LIST_DIRECTORY
  StrCpy $R2 0xE0081
  StrCpy $R3 0x10
  Call CreateFolder
  Call Open
  ${If} $0 == "foreign"
    RMDir "$R0\${TAVREL_FOLDER}"
    RMDir "$R0"
    Call CreateFolder
    Call Open
  ${EndIf}
  ${If} $0 == "link"
    !insertmacro Fail ${EXIT_FAILED} "$R0 leads to another folder. Remove it, then install again."
  ${ElseIf} $0 == "busy"
    !insertmacro Fail ${EXIT_FAILED} "Another program has opened $R0 for writing. Restart Windows, then install again."
  ${ElseIf} $0 == "foreign"
    !insertmacro Fail ${EXIT_FAILED} "$R0 is not a folder of the administrators. Remove it, or if you trust its content run takeown /a /f $R0. Then install again."
  ${EndIf}
FunctionEnd

; Users may create files in the log folder: those stay. Out: $0 the first folder or link in it, or "".
Function FindFolderOrLink
  FindFirst $1 $0 "$LogFolder\*"
  ${DoUntil} $0 == ""
    System::Call 'kernel32::GetFileAttributesW(w "$LogFolder\$0") i .r4'
    IntOp $4 $4 & 0x410 ; FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY
    ${If} $4 <> 0
    ${AndIf} $0 != "."
    ${AndIf} $0 != ".."
      ${Break}
    ${EndIf}
    FindNext $1 $0
  ${Loop}
  FindClose $1
FunctionEnd

; Writes the notice, unless there is one of the administrators. Out: $0 -1 when it cannot be written.
Function PrepareNotice
  StrCpy $R0 "$LogFolder\${NOTICE}"
  StrCpy $R2 0x20080 ; READ_CONTROL | FILE_READ_ATTRIBUTES: no other process can prevent these
  StrCpy $R3 0
  Call Open
  ${If} $0 <> 0
    System::Call 'kernel32::CloseHandle(p r0)'
    Return
  ${EndIf}
  Delete $R0
  StrCpy $R1 "${NOTICE_RIGHTS}"
  Call MakeRights
  ; GENERIC_WRITE, not shared, CREATE_NEW, FILE_ATTRIBUTE_NORMAL
  System::Call 'kernel32::CreateFileW(w R0, i 0x40000000, i 0, p r2, i 1, i 0x80, p 0) p .r0'
  ${If} $0 <> -1
    FileWrite $0 "Logs of the ${NAME}.$\r$\n"
    FileWrite $0 "Leave this file here: a folder that is not empty cannot become a link to another one.$\r$\n"
    FileClose $0
  ${EndIf}
FunctionEnd

; Ends the installer when an open folder has become a link since it was opened.
!macro RefuseLink handle path
  StrCpy $6 ${handle}
  StrCpy $R0 "${path}"
  Call ReadAttributes
  IntOp $2 $2 & 0x400
  ${If} $2 <> 0
    !insertmacro Fail ${EXIT_FAILED} "$R0 leads to another folder. Remove it, then install again."
  ${EndIf}
!macroend

; Prepares the log folder. Its rights are opened to users last, when it holds a file that they cannot delete: a user
; who may create files in an empty folder may also turn it into a junction.
Function PrepareLogFolder
  StrCpy $R0 "$APPDATA\${TAVREL_PRODUCT}"
  Call TakeFolder
  StrCpy $ParentHandle $0
  StrCpy $LogFolder "$APPDATA\${TAVREL_PRODUCT}\${TAVREL_FOLDER}"
  StrCpy $R0 $LogFolder
  Call TakeFolder
  StrCpy $LogHandle $0
  Call FindFolderOrLink
  ${If} $0 != ""
    !insertmacro Fail ${EXIT_FAILED} "$LogFolder\$0 is a folder or a link. Remove it, then install again."
  ${EndIf}
  StrCpy $R0 $LogHandle
  StrCpy $R1 "${CLOSED_RIGHTS}"
  Call SetRights
  Call PrepareNotice
  ${If} $0 = -1
    !insertmacro Fail ${EXIT_FAILED} "$LogFolder\${NOTICE} cannot be written."
  ${EndIf}
  ; From now on no folder can become a link, because both have content.
  !insertmacro RefuseLink $ParentHandle "$APPDATA\${TAVREL_PRODUCT}"
  !insertmacro RefuseLink $LogHandle $LogFolder
  StrCpy $R0 $LogHandle
  StrCpy $R1 "${LOG_RIGHTS}"
  Call SetRights
  StrCpy $R0 $ParentHandle
  StrCpy $R1 "${PARENT_RIGHTS}"
  Call SetRights
  System::Call 'kernel32::CloseHandle(p $LogHandle)'
  System::Call 'kernel32::CloseHandle(p $ParentHandle)'
FunctionEnd
