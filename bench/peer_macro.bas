REM The job of a build, done by a warm office program from inside. What to do comes through the environment; each line of
REM the results is: employees, milliseconds.

Sub Main
    Dim counts, turn As Integer, index As Integer, start As Long
    counts = Split(Environ("PEER_EMPLOYEES"), ",")
    Open Environ("PEER_RESULTS") For Output As #1
    For turn = 0 To CInt(Environ("PEER_TURNS"))
        For index = 0 To UBound(counts)
            start = GetSystemTicks()
            Job(CLng(counts(index)))
            If turn > 0 Then Print #1, counts(index) & " " & (GetSystemTicks() - start) ' the first turn warms up
        Next
    Next
    Close #1
    StarDesktop.terminate()
End Sub

Sub Job(employees As Long)
    Dim book, sheet, cursor, saved As String, row As Long, arguments(0) As New com.sun.star.beans.PropertyValue
    saved = ConvertToURL(Environ("PEER_FOLDER") & "/peer.xls")
    book = Opened(ConvertToURL(Environ("PEER_TEMPLATE")))
    For row = 0 To employees - 1
        FillEmployee(book.Sheets, row)
    Next
    arguments(0).Name = "FilterName"
    arguments(0).Value = "MS Excel 97"
    book.storeToURL(saved, arguments())
    book.close(True)
    book = Opened(saved)
    sheet = book.Sheets.getByIndex(2)
    cursor = sheet.createCursor()
    cursor.gotoEndOfUsedArea(False)
    TakePicture(book.CurrentController, sheet.getCellRangeByPosition(0, 0, cursor.RangeAddress.EndColumn, cursor.RangeAddress.EndRow))
    book.close(True)
End Sub

Function Opened(url As String)
    Dim arguments(0) As New com.sun.star.beans.PropertyValue
    arguments(0).Name = "Hidden"
    arguments(0).Value = True
    Opened = StarDesktop.loadComponentFromURL(url, "_blank", 0, arguments())
End Function

Sub FillEmployee(sheets, row As Long)
    Dim information, calculator, stubs, target As New com.sun.star.table.CellAddress, index As Integer
    information = sheets.getByIndex(0)
    calculator = sheets.getByIndex(1)
    stubs = sheets.getByIndex(2)
    FillRow(information, row + 3, Array(1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12), _
            Array("E" & (1000 + row), "Employee Number " & row, "$" & (10 + row Mod 40) & ".25", "", "", "10%", "15%", "1%", "4%", "2", "5"))
    FillRow(calculator, row + 3, Array(1, 3, 4, 5, 6, 7, 10), _
            Array("E" & (1000 + row), (30 + row Mod 11) & ".5", "7", "15", "8", "10.25", "2"))
    calculator.getCellByPosition(11, 1).setFormula("3/31/2026")
    target.Sheet = 2
    target.Column = 0
    target.Row = 1 + row * 12
    stubs.copyRange(target, stubs.getCellRangeByName("A2:IV12").RangeAddress)
    stubs.getCellByPosition(2, target.Row).setFormula("ACME Inc")
    stubs.getCellByPosition(7, target.Row + 1).setFormula("E" & (1000 + row))
End Sub

Sub FillRow(sheet, row As Long, columns, texts)
    Dim index As Integer
    For index = 0 To UBound(columns)
        sheet.getCellByPosition(columns(index), row).setFormula(texts(index))
    Next
End Sub

REM As copying the range does: the picture is made when somebody asks for it.
Sub TakePicture(controller, area)
    Dim transferable, flavor
    controller.setActiveSheet(area.Spreadsheet)
    controller.select(area)
    transferable = controller.getTransferable()
    For Each flavor In transferable.getTransferDataFlavors()
        If flavor.MimeType = "image/png" Then
            If UBound(transferable.getTransferData(flavor)) < 10000 Then Error 1
            Exit Sub
        End If
    Next
    Error 1
End Sub
