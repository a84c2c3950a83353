; The setup program of one release, for one machine (x64 or x86).
;
; Made by cmake/setup/make-setup.py, which unpacks the release zip into
; stage/, writes files.nsh (the zip's file list as File and Delete lines,
; and the installed size) beside it, and runs makensis with -NOCD in that
; folder, so that every path below is relative to it and the checkout's own
; path, whatever letters it holds, never reaches this script.
;
;   makensis -NOCD -DVERSION=1.0 -DVERSION4=1.0.0.0 -DARCH=x64 zantorunner.nsi
;
; Switches of the setup:      /S  silent   /D=<folder>  where (last)
;                             /ALLUSERS  for everyone, into Program Files
;                             /CURRENTUSER  for this user only (the default)
; Switches of Uninstall.exe:  /S  silent   /PURGE  also the user's settings
;
; Exit codes: 0 done, 1 cancelled, 2 failed (a file could not be written),
; 5 rights for everyone refused.

Unicode true
ManifestDPIAware true
SetCompressor /SOLID lzma
RequestExecutionLevel user

!if "${ARCH}" == "x64"
  ; Debian's NSIS carries the 64-bit stub: the x64 setup is a 64-bit program
  ; and sees the 64-bit registry and Program Files without redirection.
  Target amd64-unicode
!else
  Target x86-unicode
!endif

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include nsDialogs.nsh
!include files.nsh

!define PRODUCT "ZantoRunner"
!define PUBLISHER "The ZantoRunner developers"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZantoRunner"
; The same names the editor itself writes when it first starts, so that its
; own association and this one are one and the same.
!define FILE_TYPE "ZantoRunner File"
!define SETTINGS_KEY "SOFTWARE\ZantoRunner"

Name "${PRODUCT} ${VERSION}"
OutFile "package.exe"
; No InstallDir: $INSTDIR stays empty unless /D= gave one, which is how
; .onInit tells a chosen folder from its own default.
BrandingText "${PRODUCT} ${VERSION}"

VIProductVersion "${VERSION4}"
VIAddVersionKey /LANG=1033 "ProductName" "${PRODUCT}"
VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "FileDescription" "${PRODUCT} ${VERSION} setup (${ARCH})"
VIAddVersionKey /LANG=1033 "CompanyName" "${PUBLISHER}"
VIAddVersionKey /LANG=1033 "LegalCopyright" "MIT License, (c) 2026 ${PUBLISHER}"

!define MUI_ICON "zantorunner.ico"
!define MUI_UNICON "zantorunner.ico"
!define MUI_ABORTWARNING

Var AllUsers       ; 1: for everyone (HKLM, Program Files), 0: this user
Var ModeGiven      ; 1: /ALLUSERS or /CURRENTUSER said which, no page asks
Var Elevated       ; 1: this copy was started again with rights
Var DirGiven       ; the folder /D= named, or empty
Var ModeDialog
Var ModeMine
Var ModeEveryone

!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenElevated
!insertmacro MUI_PAGE_LICENSE "stage/LICENSE.txt"
Page custom ModePageShow ModePageLeave
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!define MUI_COMPONENTSPAGE_TEXT_TOP "The program, its Start menu entries and the .zxm association are removed. Your scripts and logs stay where they are."
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

; ---------------------------------------------------------------------------
; Starting this program again with administrator rights ("runas"), waiting
; for it and ending with its exit code. Used only when everyone's install (or
; its removal) is wanted by someone whose token lacks the rights (also an
; administrator whose rights Windows holds back until a prompt confirms
; them); a deployment tool running as SYSTEM, or a setup started from an
; elevated prompt, never comes here. PARAMS: the switches for the new copy.
!macro RunElevatedAndQuit PARAMS
  ; SHELLEXECUTEINFOW: 112 bytes with 64-bit pointers (two 4-byte pads keep
  ; them aligned), 60 with 32-bit ones. fMask 0x40: keep the process handle.
  !if "${ARCH}" == "x64"
    System::Call '*(i 112, i 0x40, p $HWNDPARENT, w "runas", w "$EXEPATH", w `${PARAMS}`, p 0, i 1, i 0, p 0, p 0, p 0, p 0, i 0, i 0, p 0, p 0) p .r8'
  !else
    System::Call '*(i 60, i 0x40, p $HWNDPARENT, w "runas", w "$EXEPATH", w `${PARAMS}`, p 0, i 1, p 0, p 0, p 0, p 0, i 0, p 0, p 0) p .r8'
  !endif
  System::Call 'shell32::ShellExecuteExW(p r8) i .r9'
  StrCpy $7 5
  ${If} $9 <> 0
    !if "${ARCH}" == "x64"
      System::Call '*$8(i, i, p, p, p, p, p, i, i, p, p, p, p, i, i, p, p .r6)'
    !else
      System::Call '*$8(i, i, p, p, p, p, p, i, p, p, p, p, i, p, p .r6)'
    !endif
    ${If} $6 P<> 0
      HideWindow
      System::Call 'kernel32::WaitForSingleObject(p r6, i -1)'
      System::Call 'kernel32::GetExitCodeProcess(p r6, *i .r7)'
      System::Call 'kernel32::CloseHandle(p r6)'
    ${EndIf}
  ${EndIf}
  System::Free $8
  SetErrorLevel $7
  Quit
!macroend

!macro IsAdmin RESULT
  UserInfo::GetAccountType
  Pop ${RESULT}
!macroend

; ---------------------------------------------------------------------------
; The installer.

Function .onInit
  !if "${ARCH}" == "x64"
    SetRegView 64
  !endif
  StrCpy $DirGiven $INSTDIR
  StrCpy $AllUsers 0
  StrCpy $ModeGiven 0
  StrCpy $Elevated 0
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/ALLUSERS" $1
  ${IfNot} ${Errors}
    StrCpy $AllUsers 1
    StrCpy $ModeGiven 1
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/CURRENTUSER" $1
  ${IfNot} ${Errors}
    StrCpy $AllUsers 0
    StrCpy $ModeGiven 1
  ${EndIf}
  ClearErrors
  ${GetOptions} $0 "/ELEVATED" $1
  ${IfNot} ${Errors}
    StrCpy $Elevated 1
  ${EndIf}
  Call ApplyMode
  ${If} $AllUsers == 1
  ${AndIf} ${Silent}
    Call NeedRights
  ${EndIf}
FunctionEnd

; The shell folders, the registry root (SHCTX) and the default folder of the
; chosen mode. An earlier install of the same mode is upgraded where it is.
Function ApplyMode
  ${If} $AllUsers == 1
    SetShellVarContext all
  ${Else}
    SetShellVarContext current
  ${EndIf}
  ${If} $DirGiven != ""
    StrCpy $INSTDIR $DirGiven
    Return
  ${EndIf}
  ReadRegStr $0 SHCTX "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
    StrCpy $INSTDIR $0
  ${ElseIf} $AllUsers == 1
    !if "${ARCH}" == "x64"
      StrCpy $INSTDIR "$PROGRAMFILES64\${PRODUCT}"
    !else
      StrCpy $INSTDIR "$PROGRAMFILES\${PRODUCT}"
    !endif
  ${Else}
    StrCpy $INSTDIR "$LOCALAPPDATA\Programs\${PRODUCT}"
  ${EndIf}
FunctionEnd

; Everyone's install writes to Program Files and HKLM: without the rights
; for that, this copy hands over to one started with them.
Function NeedRights
  !insertmacro IsAdmin $0
  ${If} $0 == "Admin"
    Return
  ${EndIf}
  ${If} $Elevated == 1
    MessageBox MB_ICONSTOP "Installing for everyone needs administrator rights." /SD IDOK
    SetErrorLevel 5
    Quit
  ${EndIf}
  StrCpy $1 "/ALLUSERS /ELEVATED"
  ${If} ${Silent}
    StrCpy $1 "/S $1"
  ${EndIf}
  !insertmacro RunElevatedAndQuit "$1 /D=$INSTDIR"
FunctionEnd

Function SkipWhenElevated
  ${If} $Elevated == 1
    Abort
  ${EndIf}
FunctionEnd

Function ModePageShow
  ${If} $ModeGiven == 1
    Abort
  ${EndIf}
  !insertmacro MUI_HEADER_TEXT "Choose who may use ${PRODUCT}" "Install for yourself, or for everyone on this computer."
  nsDialogs::Create 1018
  Pop $ModeDialog
  ${NSD_CreateRadioButton} 0 10u 100% 12u "Just for &me (no administrator rights needed)"
  Pop $ModeMine
  ${NSD_CreateRadioButton} 0 30u 100% 12u "For &everyone on this computer (needs administrator rights)"
  Pop $ModeEveryone
  ${If} $AllUsers == 1
    ${NSD_Check} $ModeEveryone
  ${Else}
    ${NSD_Check} $ModeMine
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function ModePageLeave
  ${NSD_GetState} $ModeEveryone $0
  ${If} $0 == ${BST_CHECKED}
    StrCpy $AllUsers 1
  ${Else}
    StrCpy $AllUsers 0
  ${EndIf}
  ; A folder of the other mode's default is not kept when the mode changes.
  Call ApplyMode
  ${If} $AllUsers == 1
    Call NeedRights
  ${EndIf}
FunctionEnd

Section "${PRODUCT}" SecProgram
  SectionIn RO
  SetOutPath "$INSTDIR"
  ClearErrors
  !insertmacro ZR_INSTALL_FILES
  ${If} ${Errors}
    ; Often the program is running and holds its files.
    MessageBox MB_ICONSTOP "Some files could not be written to $INSTDIR. Close ${PRODUCT} and run the setup again." /SD IDOK
    SetErrorLevel 2
    Abort
  ${EndIf}
  ClearErrors
  WriteUninstaller "$INSTDIR\Uninstall.exe"
  ${If} ${Errors}
    SetErrorLevel 2
    Abort
  ${EndIf}

  ; The Start menu.
  CreateDirectory "$SMPROGRAMS\${PRODUCT}"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\${PRODUCT}.lnk" "$INSTDIR\ZantoRunner.exe" "" "$INSTDIR\ZantoRunner.exe" 0
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\${PRODUCT} Help.lnk" "$INSTDIR\ZantoRunner.chm"
  CreateShortcut "$SMPROGRAMS\${PRODUCT}\${PRODUCT} Examples.lnk" "$INSTDIR\examples"

  ; The .zxm association: open edits, Run runs hidden.
  WriteRegStr SHCTX "Software\Classes\.zxm" "" "${FILE_TYPE}"
  WriteRegStr SHCTX "Software\Classes\.zxm\ShellNew" "NULLFile" ""
  WriteRegStr SHCTX "Software\Classes\.zxm\OpenWithProgids" "${FILE_TYPE}" ""
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}" "" "${FILE_TYPE}"
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\DefaultIcon" "" '"$INSTDIR\ZantoRunner.exe",0'
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Open" "" "&Open"
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Open\command" "" '"$INSTDIR\ZantoRunner.exe" "%1"'
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Edit" "" "&Edit"
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Edit\command" "" '"$INSTDIR\ZantoRunner.exe" /e "%1"'
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Run" "" "&Run"
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Run\command" "" '"$INSTDIR\ZantoRunner.exe" /r "%1"'
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Run in ZantoRunner" "" "Run in &ZantoRunner"
  WriteRegStr SHCTX "Software\Classes\${FILE_TYPE}\shell\Run in ZantoRunner\command" "" '"$INSTDIR\ZantoRunner.exe" /v "%1"'
  System::Call 'shell32::SHChangeNotify(i 0x8000000, i 0, p 0, p 0)'

  ; Apps & features.
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" '"$INSTDIR\ZantoRunner.exe",0'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
  ; In place (_?=) the uninstaller does its work in this very process, so
  ; whoever runs it silently waits for the end and gets its exit code.
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S _?=$INSTDIR'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" ${INSTALLED_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
  SetErrorLevel 0
SectionEnd

; ---------------------------------------------------------------------------
; The uninstaller.


Section "un.${PRODUCT}" SecUnProgram
  SectionIn RO
  !insertmacro ZR_REMOVE_FILES

  Delete "$SMPROGRAMS\${PRODUCT}\${PRODUCT}.lnk"
  Delete "$SMPROGRAMS\${PRODUCT}\${PRODUCT} Help.lnk"
  Delete "$SMPROGRAMS\${PRODUCT}\${PRODUCT} Examples.lnk"
  RMDir "$SMPROGRAMS\${PRODUCT}"

  ; The association, and .zxm itself only while it is still ours: another
  ; program may have taken the type since.
  DeleteRegKey SHCTX "Software\Classes\${FILE_TYPE}"
  DeleteRegValue SHCTX "Software\Classes\.zxm\OpenWithProgids" "${FILE_TYPE}"
  DeleteRegKey /ifempty SHCTX "Software\Classes\.zxm\OpenWithProgids"
  ReadRegStr $0 SHCTX "Software\Classes\.zxm" ""
  ${If} $0 == "${FILE_TYPE}"
    DeleteRegValue SHCTX "Software\Classes\.zxm" ""
    DeleteRegValue SHCTX "Software\Classes\.zxm\ShellNew" "NULLFile"
    DeleteRegKey /ifempty SHCTX "Software\Classes\.zxm\ShellNew"
  ${EndIf}
  DeleteRegKey /ifempty SHCTX "Software\Classes\.zxm"
  System::Call 'shell32::SHChangeNotify(i 0x8000000, i 0, p 0, p 0)'

  DeleteRegKey SHCTX "${UNINSTALL_KEY}"

  ; Run in place (_?=, the quiet command), this program is Uninstall.exe
  ; itself, which cannot be deleted while it runs: a copy of it in TEMP
  ; waits for this process to end and then removes it and the folder.
  Delete "$INSTDIR\Uninstall.exe"
  ${If} ${FileExists} "$INSTDIR\Uninstall.exe"
    System::Call 'kernel32::GetCurrentProcessId() i .r1'
    StrCpy $0 "$TEMP\ZantoRunner-uninstall-$1.exe"
    System::Call 'kernel32::CopyFileW(w "$EXEPATH", w r0, i 0) i .r2'
    ${If} $2 <> 0
      SetOutPath "$TEMP"
      Exec '"$0" /S /CLEANUP=$1 _?=$INSTDIR'
    ${Else}
      Delete /REBOOTOK "$INSTDIR\Uninstall.exe"
    ${EndIf}
  ${EndIf}
  ; Only when nothing of the user's is left in it.
  RMDir "$INSTDIR"
SectionEnd

Section /o "un.Also remove my settings" SecPurge
  ; The settings and user variables of the user who uninstalls, and the
  ; variables too long for the registry, which are kept beside the program.
  DeleteRegKey HKCU "${SETTINGS_KEY}"
  Delete "$INSTDIR\*.ZANTO_var"
  RMDir "$INSTDIR"
SectionEnd

; After the sections, whose numbers it needs.
Function un.onInit
  !if "${ARCH}" == "x64"
    SetRegView 64
  !endif
  ; The copy that removes Uninstall.exe once the uninstall that started it
  ; has ended (see above); it then goes itself at the next restart.
  ${un.GetParameters} $0
  ClearErrors
  ${un.GetOptions} $0 "/CLEANUP=" $1
  ${IfNot} ${Errors}
    SetOutPath "$TEMP"
    System::Call 'kernel32::OpenProcess(i 0x100000, i 0, i $1) p .r2'
    ${If} $2 P<> 0
      System::Call 'kernel32::WaitForSingleObject(p r2, i 60000)'
      System::Call 'kernel32::CloseHandle(p r2)'
    ${EndIf}
    ; The copy started with rights for everyone's uninstall ends a moment
    ; before the one that started it: a few more tries cover that.
    StrCpy $3 0
    ${Do}
      Delete "$INSTDIR\Uninstall.exe"
      ${IfNot} ${FileExists} "$INSTDIR\Uninstall.exe"
      ${OrIf} $3 >= 100
        ${Break}
      ${EndIf}
      Sleep 100
      IntOp $3 $3 + 1
    ${Loop}
    RMDir "$INSTDIR"
    Delete /REBOOTOK "$EXEPATH"
    SetErrorLevel 0
    Quit
  ${EndIf}
  ; Everyone's install is the one whose entry in HKLM names this folder.
  StrCpy $AllUsers 0
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 == $INSTDIR
    StrCpy $AllUsers 1
    SetShellVarContext all
  ${Else}
    SetShellVarContext current
  ${EndIf}
  ${un.GetParameters} $0
  ClearErrors
  ${un.GetOptions} $0 "/PURGE" $1
  ${IfNot} ${Errors}
    !insertmacro SelectSection ${SecPurge}
  ${EndIf}
  StrCpy $Elevated 0
  ClearErrors
  ${un.GetOptions} $0 "/ELEVATED" $1
  ${IfNot} ${Errors}
    StrCpy $Elevated 1
  ${EndIf}
  ${If} $AllUsers == 1
    !insertmacro IsAdmin $1
    ${If} $1 != "Admin"
      ${If} $Elevated == 1
        MessageBox MB_ICONSTOP "Removing ${PRODUCT} for everyone needs administrator rights." /SD IDOK
        SetErrorLevel 5
        Quit
      ${EndIf}
      !insertmacro RunElevatedAndQuit "$0 /ELEVATED _?=$INSTDIR"
    ${EndIf}
  ${EndIf}
FunctionEnd

!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SecUnProgram} "The program, its Start menu entries, the .zxm association and its entry in Apps & features."
  !insertmacro MUI_DESCRIPTION_TEXT ${SecPurge} "Your settings and user variables (HKEY_CURRENT_USER\${SETTINGS_KEY})."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END
