"""Prints the cells of a spreadsheet as another program reads them: read_xlsx.py FILE"""
import sys
import openpyxl

sheet = openpyxl.load_workbook(sys.argv[1]).active
print(f"{sheet.title}, frozen at {sheet.freeze_panes}")
for row in sheet.iter_rows():
    for cell in row:
        if cell.value is not None:
            shown = repr(cell.value) if isinstance(cell.value, str) else str(cell.value)
            bold = " bold" if cell.font.bold else ""
            print(f"{cell.coordinate} {type(cell.value).__name__} {shown} {cell.number_format}{bold}")
