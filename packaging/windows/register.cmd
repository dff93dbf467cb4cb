@echo off
rem Registers the splitter for every user of this computer, from the folder that this script is in.
rem With /s it shows no message.
"%SystemRoot%\System32\regsvr32.exe" %1 "%~dp0tarvex.dll"
exit /b %errorlevel%
