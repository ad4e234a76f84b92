"""The Word files that reading documents is measured on, and the peers' time over them."""

import os
import random
import resource
import subprocess
import time
import zipfile

_WORD = 'xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main"'
_TYPES = ('<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
          '<Default Extension="xml" ContentType="application/xml"/>'
          '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
          '<Override PartName="/word/document.xml" '
          'ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>')
_RELS = ('<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"><Relationship Id="rId1" '
         'Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/{}" Target="{}"/></Relationships>')
_LEVELS = "".join(f'<w:lvl w:ilvl="{level}"><w:numFmt w:val="decimal"/></w:lvl>' for level in range(9))
_SYLLABLES = "ba den for gi hal in ka lo men no pre qui ran sol ta un ver wi xe yo zur".split()


def page(data):
    return _made(data, "page.docx", 1)


def report(data):
    """As long as the reports that people write: some forty pages."""
    return _made(data, "report.docx", 40)


def large(data):
    """A main part of some 30 MB."""
    return _made(data, "large.docx", 3_000)


def pandoc(path):
    return ["pandoc", "--from=docx", "--to=plain", path]


def docx2txt(path):
    return ["docx2txt", path, "-"]


def processor_ms(command):
    def taken():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime
    start = taken()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return (taken() - start) * 1000


def elapsed_ms(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return (time.perf_counter() - start) * 1000


def _made(data, name, pages):
    path = os.path.join(data, name)
    if not os.path.exists(path):
        with zipfile.ZipFile(path + ".new", "w", zipfile.ZIP_DEFLATED) as file:
            file.writestr("[Content_Types].xml", _TYPES)
            file.writestr("_rels/.rels", _RELS.format("officeDocument", "word/document.xml"))
            file.writestr("word/_rels/document.xml.rels", _RELS.format("numbering", "numbering.xml"))
            file.writestr("word/numbering.xml", f'<w:numbering {_WORD}><w:abstractNum w:abstractNumId="1">{_LEVELS}</w:abstractNum>'
                          '<w:num w:numId="1"><w:abstractNumId w:val="1"/></w:num></w:numbering>')
            file.writestr("word/document.xml", f"<w:document {_WORD}><w:body>{''.join(_page(number, random.Random(number)) for number in range(pages))}</w:body></w:document>")
        os.rename(path + ".new", path)
    return path


def _words(chance, count):
    """Words that deflate doesn't find easier than real ones."""
    return " ".join("".join(chance.choices(_SYLLABLES, k=chance.randint(1, 4))) for _ in range(count))


def _page(number, chance):
    item = '<w:numPr><w:ilvl w:val="{}"/><w:numId w:val="1"/></w:numPr>'
    rows = "".join("<w:tr>" + "".join(f"<w:tc><w:tcPr/>{_paragraph(f'Cell {row} {column}')}</w:tc>" for column in range(4)) + "</w:tr>"
                   for row in range(4))
    return "".join([
        _paragraph(f"Chapter {number}", '<w:pStyle w:val="Heading1"/>'),
        *(_paragraph(_words(chance, 20)) for each in range(8)),
        *(_paragraph(_words(chance, 12), item.format(each % 3)) for each in range(5)),
        f"<w:tbl>{rows}</w:tbl>"])


def _paragraph(words, properties=""):
    first, rest = words[:len(words) // 2], words[len(words) // 2:]
    return (f'<w:p w:rsidR="00A77B3E" w:rsidRDefault="00A77B3E"><w:pPr>{properties}</w:pPr><w:r><w:rPr><w:b/></w:rPr>'
            f'<w:t xml:space="preserve">{first}</w:t></w:r><w:r w:rsidR="00B12C44"><w:t xml:space="preserve">{rest}</w:t></w:r></w:p>')
