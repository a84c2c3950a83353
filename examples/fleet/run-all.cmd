@echo off
rem Runs every script of a folder with ZantoRunner, unattended, one after the
rem other, and merges their JUnit results into one file a CI server reads.
rem
rem   run-all.cmd JOBS-FOLDER [RESULTS-FOLDER]
rem
rem Each run leaves its own folder under RESULTS-FOLDER\artifacts (its log,
rem failure images, result.json and report.html) and its JUnit file in
rem RESULTS-FOLDER\junit; all of them together are RESULTS-FOLDER\junit-all.xml.
rem The exit code is 0 when every script passed and 1 when any did not.
rem ZantoRunner.exe is taken from the variable ZANTORUNNER, or else from two
rem folders up (where the release zip puts it).
setlocal EnableExtensions DisableDelayedExpansion
if "%~1"=="" (
  echo usage: run-all.cmd JOBS-FOLDER [RESULTS-FOLDER]
  exit /b 2
)
set "JOBS=%~f1"
set "OUT=%~f2"
if "%~2"=="" set "OUT=%CD%\results"
if "%ZANTORUNNER%"=="" set "ZANTORUNNER=%~dp0..\..\ZantoRunner.exe"
if not exist "%OUT%\junit" mkdir "%OUT%\junit"
if not exist "%OUT%\artifacts" mkdir "%OUT%\artifacts"
set FAILED=0
set COUNT=0

rem The loops stand in their folders: a quoted pattern with a folder in it is
rem not expanded by every cmd.
pushd "%JOBS%"
for %%S in (*.zxm) do call :run "%%~fS" "%%~nS"
popd

rem One file of all suites. In ZantoRunner's JUnit files only the frame (the
rem declaration, <testsuites> and </testsuites>) begins a line with "<", so
rem the loop below, which passes over such lines, copies the rest unchanged.
set "ALL=%OUT%\junit-all.xml"
> "%ALL%" echo ^<?xml version="1.0" encoding="UTF-8"?^>
>> "%ALL%" echo ^<testsuites name="ZantoRunner"^>
pushd "%OUT%\junit"
for %%J in (*.xml) do call :merge "%%~fJ"
popd
>> "%ALL%" echo ^</testsuites^>
echo %COUNT% script(s) run; results in %ALL%
exit /b %FAILED%

:run
set /a COUNT+=1
echo running %~nx1
"%ZANTORUNNER%" /r /unattended /artifacts "%OUT%\artifacts" /junit "%OUT%\junit\%~2.xml" "%~1"
if errorlevel 1 (
  set FAILED=1
  echo   %~nx1 did not pass
)
exit /b

:merge
for /f "usebackq eol=< delims=" %%L in ("%~1") do >> "%ALL%" echo.%%L
exit /b
