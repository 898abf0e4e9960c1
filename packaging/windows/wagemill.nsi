; The installer for one user, made on Debian: build.sh calls makensis with
; VERSION  such as 0.1.0
; FILES    a folder with all that is installed
; REMOVAL  a script that removes these from $INSTDIR
; ICON, OUTPUT
; Nothing here needs an administrator. What the user typed is in the registry, and stays when the program is removed.
Target amd64-unicode
Unicode true
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true
Name "Wagemill"
BrandingText "Wagemill ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Wagemill"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Wagemill"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
!define MENU "$SMPROGRAMS\Wagemill"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Wagemill"
VIAddVersionKey "CompanyName" "Quellory"
VIAddVersionKey "FileDescription" "Installs Wagemill"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright the Wagemill authors. MIT licence"

!include "MUI2.nsh"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\wagemill.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start Wagemill"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; A program that runs cannot be written to.
!macro RequireClosed Prefix
Function ${Prefix}requireClosed
    try:
    IfFileExists "$INSTDIR\wagemill.exe" 0 closed
    ClearErrors
    FileOpen $0 "$INSTDIR\wagemill.exe" a
    IfErrors 0 opened
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Wagemill is running. Please close it, then press Retry." /SD IDCANCEL IDRETRY try
    SetErrorLevel 3
    Abort "Wagemill is running: nothing was changed."
    opened:
    FileClose $0
    closed:
FunctionEnd
!macroend
!insertmacro RequireClosed ""
!insertmacro RequireClosed "un."

Section
    Call requireClosed
    ; What an older version had and this one has not must go.
    IfFileExists "$INSTDIR\uninstall.exe" 0 +2
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'
    SetOutPath "$INSTDIR"
    File /r "${FILES}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateDirectory "${MENU}"
    CreateShortcut "${MENU}\Wagemill.lnk" "$INSTDIR\wagemill.exe"
    CreateShortcut "${MENU}\Wagemill without Excel.lnk" "$INSTDIR\Wagemill without Excel.cmd" "" "$INSTDIR\wagemill.exe" 0 SW_SHOWMINIMIZED
    CreateShortcut "${MENU}\Wagemill for 25 employees.lnk" "$INSTDIR\Wagemill for 25 employees.cmd" "" "$INSTDIR\wagemill.exe" 0 SW_SHOWMINIMIZED
    CreateShortcut "${MENU}\Wagemill manual.lnk" "$INSTDIR\documents\manual.html"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Wagemill"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\wagemill.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Quellory"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
    Call un.requireClosed
    !include "${REMOVAL}" ; the installed files one by one: the folder may hold others
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "${MENU}\*.lnk"
    RMDir "${MENU}"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
