@rem The window has 25 employees; write another number for more or fewer.
@set WAGEMILL_EMPLOYEES=25
@start "" "%~dp0wagemill.exe"
