; The installer of what packaging/windows/build has laid out, for one user and without an administrator:
;   makensis -DVERSION=1.0.0 -DFOLDER=laid-out -DFILES=files.nsh -DOUTPUT=setup.exe installer.nsi
; FILES deletes what is in FOLDER, file by file, from $INSTDIR: what the user has put there stays.
; Options of the setup: /S says and asks nothing, /D=FOLDER installs there, /AUTOSTART chooses "Start with
; Windows". Of the uninstaller: /S, and /SETTINGS, which removes the settings too.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true
!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh

!define NAME "Tovan Network Monitor"
!define PROGRAM "tovan-network-monitor.exe"
!define SETTINGS "Software\Tovan\${NAME}"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define AUTOSTART "Software\Microsoft\Windows\CurrentVersion\Run"
!define SHORTCUT "$SMPROGRAMS\${NAME}.lnk"

Name "${NAME}"
BrandingText "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
InstallDirRegKey HKCU "${UNINSTALL}" "InstallLocation"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Setup of ${NAME}"
VIAddVersionKey "CompanyName" "Tovan"
VIAddVersionKey "LegalCopyright" "MIT licence"

!define MUI_ICON "tovan-network-monitor.ico"
!define MUI_UNICON "tovan-network-monitor.ico"
!define MUI_FINISHPAGE_RUN "$INSTDIR\${PROGRAM}"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; The file of a program that runs cannot be written.
!macro WaitForEnd
    ${DoWhile} ${FileExists} "$INSTDIR\${PROGRAM}"
        ClearErrors
        FileOpen $0 "$INSTDIR\${PROGRAM}" a
        ${IfNot} ${Errors}
            FileClose $0
            ${ExitDo}
        ${EndIf}
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
            "${NAME} is running. Choose $\"Exit$\" in the menu of its tray icon, then try again." \
            /SD IDCANCEL IDRETRY +3
        SetErrorLevel 2
        Quit
    ${Loop}
!macroend

Section "-${NAME}"
    !insertmacro WaitForEnd
    ; Of another version other files may be there.
    ${If} ${FileExists} "$INSTDIR\uninstall.exe"
        ExecWait '"$INSTDIR\uninstall.exe" /S /UPGRADE _?=$INSTDIR'
    ${EndIf}
    SetOutPath "$INSTDIR"
    File /r "${FOLDER}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "${SHORTCUT}" "$INSTDIR\${PROGRAM}"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "${NAME}"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
    WriteRegStr HKCU "${UNINSTALL}" "Publisher" "Tovan"
    WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${UNINSTALL}" "EstimatedSize" $0
SectionEnd

Section /o "Start with Windows" startWithWindows
    WriteRegStr HKCU "${AUTOSTART}" "${NAME}" '"$INSTDIR\${PROGRAM}"'
SectionEnd

Function .onInit
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/AUTOSTART" $1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${startWithWindows}
    ${EndIf}
    ; What was chosen before stays chosen.
    ReadRegStr $0 HKCU "${AUTOSTART}" "${NAME}"
    ${If} $0 != ""
        !insertmacro SelectSection ${startWithWindows}
    ${EndIf}
FunctionEnd

Section "Uninstall"
    !insertmacro WaitForEnd
    !include "${FILES}"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    RMDir "$LOCALAPPDATA\Programs" ; if nothing else is in it
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/UPGRADE" $1
    ${If} ${Errors}
        Delete "${SHORTCUT}"
        DeleteRegKey HKCU "${UNINSTALL}"
        DeleteRegValue HKCU "${AUTOSTART}" "${NAME}"
        ClearErrors
        ${GetOptions} $0 "/SETTINGS" $1
        ${If} ${Errors}
            MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 \
                "Remove your settings, rules and counters too?" /SD IDNO IDNO keep
        ${EndIf}
        DeleteRegKey HKCU "${SETTINGS}"
        DeleteRegKey /ifempty HKCU "Software\Tovan"
        keep:
    ${EndIf}
SectionEnd
