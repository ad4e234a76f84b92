"""The workbooks that reading sheets is measured on, and the peer's time over them."""

import os
import random
import resource
import subprocess
import zipfile

_SPACES = ('xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" '
           'xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"')
_TYPE = "application/vnd.openxmlformats-officedocument.spreadsheetml."
_RELATION = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
_PARTS = {
    "[Content_Types].xml":
        '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
        '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
        f'<Override PartName="/xl/workbook.xml" ContentType="{_TYPE}sheet.main+xml"/>'
        f'<Override PartName="/xl/worksheets/sheet1.xml" ContentType="{_TYPE}worksheet+xml"/>'
        f'<Override PartName="/xl/sharedStrings.xml" ContentType="{_TYPE}sharedStrings+xml"/>'
        f'<Override PartName="/xl/styles.xml" ContentType="{_TYPE}styles+xml"/></Types>',
    "_rels/.rels":
        '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
        f'<Relationship Id="r1" Type="{_RELATION}officeDocument" Target="xl/workbook.xml"/></Relationships>',
    "xl/workbook.xml":
        f'<workbook {_SPACES}><sheets><sheet name="Data" sheetId="1" r:id="r1"/></sheets></workbook>',
    "xl/_rels/workbook.xml.rels":
        '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
        f'<Relationship Id="r1" Type="{_RELATION}worksheet" Target="worksheets/sheet1.xml"/>'
        f'<Relationship Id="r2" Type="{_RELATION}sharedStrings" Target="sharedStrings.xml"/>'
        f'<Relationship Id="r3" Type="{_RELATION}styles" Target="styles.xml"/></Relationships>',
    "xl/styles.xml":
        f'<styleSheet {_SPACES}><cellXfs count="4"><xf numFmtId="0"/><xf numFmtId="4"/><xf numFmtId="14"/>'
        '<xf numFmtId="10"/></cellXfs></styleSheet>',
}


def table(data, rows, columns):
    """Texts, amounts, days and percents in turn."""
    def cell(random_, row, column):
        place = _letters(column) + str(row + 1)
        value, style = ((random_.randrange(5000), ' t="s"'), (f"{random_.random() * 1e5:.4f}", ' s="1"'),
                        (random_.randrange(30000, 50000), ' s="2"'), (f"{random_.random():.6f}", ' s="3"'))[column % 4]
        return f'<c r="{place}"{style}><v>{value}</v></c>'

    def sheet():
        random_ = random.Random(1)
        return "".join(f'<row r="{row + 1}">' + "".join(cell(random_, row, column) for column in range(columns)) + "</row>"
                       for row in range(rows))
    return _made(data, f"table-{rows}x{columns}.xlsx", sheet, lambda: _strings(5000))


def many_strings(data, count):
    """One cell of each string, in a sheet that a preview sees the beginning of. Gives the size of the largest part too."""
    def sheet():
        return "".join(f'<row r="{row + 1}"><c r="A{row + 1}" t="s"><v>{row}</v></c></row>' for row in range(count))
    path = _made(data, f"strings-{count}.xlsx", sheet, lambda: _strings(count))
    with zipfile.ZipFile(path) as archive:
        return path, archive.getinfo("xl/sharedStrings.xml").file_size


def table_ms(path):
    """The processor's time that the peer takes to write a table of the workbook."""
    def taken():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime
    start = taken()
    subprocess.run(["xlsx2csv", "-a", path], check=True, stdout=subprocess.DEVNULL)
    return (taken() - start) * 1000


def _strings(count):
    return "".join(f"<si><t>Words of {number} that say a little more</t></si>" for number in range(count))


def _letters(column):
    name = ""
    column += 1
    while column:
        name = chr(65 + (column - 1) % 26) + name
        column = (column - 1) // 26
    return name


def _made(data, name, sheet, strings):
    path = os.path.join(data, name)
    if not os.path.exists(path):
        with zipfile.ZipFile(path + ".part", "w", zipfile.ZIP_DEFLATED) as archive:
            for part, text in _PARTS.items():
                archive.writestr(part, text)
            archive.writestr("xl/sharedStrings.xml", f"<sst {_SPACES}>{strings()}</sst>")
            archive.writestr("xl/worksheets/sheet1.xml", f"<worksheet {_SPACES}><sheetData>{sheet()}</sheetData></worksheet>")
        os.rename(path + ".part", path)
    return path
