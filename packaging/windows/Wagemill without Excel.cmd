@rem Wagemill computes and writes the workbook itself.
@set WAGEMILL_SPREADSHEET=embedded
@start "" "%~dp0wagemill.exe"
