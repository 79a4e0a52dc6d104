; The installer of a release for one user, without administrator's rights: the program writes beside
; itself, so that it lies in a folder of the user's own. scripts/package.sh gives VERSION, FOLDER (what
; is installed), FILES (the lines that take it away again) and OUTPUT.
Target amd64-unicode ; as the programs are
SetCompressor /SOLID lzma
SetDateSave off
RequestExecutionLevel user
ManifestDPIAware true

!include MUI2.nsh
!include FileFunc.nsh
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\NacelleBench"

Name "NacelleBench"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\NacelleBench"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "NacelleBench ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "NacelleBench"
VIAddVersionKey "FileDescription" "Installer of NacelleBench"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "${HOLDERS}"

!define MUI_ICON "resources/a71dp-jlnoy-001.ico"
!define MUI_UNICON "resources/a71dp-jlnoy-001.ico"
!define MUI_FINISHPAGE_RUN "$INSTDIR\NacelleBench.exe"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "SimpChinese"
!insertmacro MUI_LANGUAGE "English"

LangString AskSavedFile ${LANG_SIMPCHINESE} "同时删除保存的设置（controlConfig.ncl）？"
LangString AskSavedFile ${LANG_ENGLISH} "Delete the saved settings (controlConfig.ncl) too?"

Section
    SetOutPath "$INSTDIR"
    ; At an upgrade what was saved stays.
    SetOverwrite off
    File "${FOLDER}/controlConfig.ncl"
    SetOverwrite on
    File /r /x controlConfig.ncl "${FOLDER}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "$SMPROGRAMS\NacelleBench.lnk" "$INSTDIR\NacelleBench.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "NacelleBench"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\NacelleBench.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
    ; By name, file by file: the folder may be one that holds something else too.
    !include "${FILES}"
    ; What was saved goes only where somebody says so.
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/PURGE" $1
    IfErrors 0 purge
    MessageBox MB_YESNO "$(AskSavedFile)" /SD IDNO IDNO keep
purge:
    Delete "$INSTDIR\controlConfig.ncl"
keep:
    Delete "$INSTDIR\uninstall.exe"
    SetOutPath "$TEMP" ; a folder that a program works in cannot go
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\NacelleBench.lnk"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
