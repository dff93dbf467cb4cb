@echo off
rem Removes what register.cmd wrote. With /s it shows no message but what is wrong. The folder may be deleted
rem afterwards.
setlocal
rem The regsvr32 of as many bits as the module has, whatever this console has.
set "system=%SystemRoot%\@SYSTEM@"
if not exist "%system%\regsvr32.exe" set "system=%SystemRoot%\System32"
"%system%\reg.exe" add HKLM\Software\TarvexWriteTest /f >nul 2>&1
if errorlevel 1 goto refused
"%system%\reg.exe" delete HKLM\Software\TarvexWriteTest /f >nul 2>&1
"%system%\regsvr32.exe" /u %1 "%~dp0tarvex.dll"
exit /b %errorlevel%

:refused
echo Not allowed to unregister: right-click %~nx0 and choose "Run as administrator".
if not "%~1"=="/s" pause
exit /b 5
