; The installer: the wizard and its help into the suite's program folder. /S installs without a word, /D=FOLDER says
; where to (the last argument, without quotes). BUILD, CHM and OUT come from scripts/package-windows.
Unicode true
Name "Korlan Live Update"
OutFile "${OUT}"
InstallDir "C:\KORLAN"
InstallDirRegKey HKLM "Software\Korlan\KlnUpdt" "Folder"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\KlnUpdt"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Section
    SetOutPath "$INSTDIR"
    ClearErrors
    File "${BUILD}/KlnUpdt.EXE"
    IfErrors 0 written ; the wizard runs, or the folder refuses
        SetErrorLevel 2
        Abort "KlnUpdt.EXE cannot be written. Close Live Update and try again."
    written:
    File "${CHM}"
    WriteUninstaller "$INSTDIR\KLNUPUNI.EXE"
    WriteRegStr HKLM "Software\Korlan\KlnUpdt" "Folder" "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "Korlan Live Update"
    WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\KLNUPUNI.EXE"'
    WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
    WriteRegDWORD HKLM "${UNINSTALL}" "NoRepair" 1
SectionEnd

; Nothing of the suite or of the user goes: no setting, no library, no folder that holds anything.
Section Uninstall
    Delete "$INSTDIR\KlnUpdt.EXE"
    Delete "$INSTDIR\KlnUpdt.chm"
    Delete "$INSTDIR\KLNUPUNI.EXE"
    RMDir "$INSTDIR"
    DeleteRegKey HKLM "Software\Korlan\KlnUpdt"
    DeleteRegKey HKLM "${UNINSTALL}"
SectionEnd
