@echo off
rem Removes what register.cmd wrote. With /s it shows no message. The folder may be deleted afterwards.
"%SystemRoot%\System32\regsvr32.exe" /u %1 "%~dp0tarvex.dll"
exit /b %errorlevel%
