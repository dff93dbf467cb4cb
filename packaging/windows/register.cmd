@echo off
rem Registers the splitter for every user of this computer, from the folder that this script is in.
rem With /s it shows no message but what is wrong.
setlocal
rem The regsvr32 of as many bits as the module has, whatever this console has.
set "system=%SystemRoot%\@SYSTEM@"
if not exist "%system%\regsvr32.exe" set "system=%SystemRoot%\System32"
"%system%\reg.exe" add HKLM\Software\TarvexWriteTest /f >nul 2>&1
if errorlevel 1 goto refused
"%system%\reg.exe" delete HKLM\Software\TarvexWriteTest /f >nul 2>&1
"%system%\regsvr32.exe" %1 "%~dp0tarvex.dll"
exit /b %errorlevel%

:refused
echo Not allowed to register: right-click %~nx0 and choose "Run as administrator".
if not "%~1"=="/s" pause
exit /b 5
