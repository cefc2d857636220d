#!/usr/bin/env python3
"""Writes one sample print job a language into a folder: make_samples.py FOLDER

The same bytes at every run: no time, no random numbers.
"""

import io
import pathlib
import struct
import sys
import zipfile

UEL = b"\x1b%-12345X"


def pjl(*lines, job):
    """A job wrapped in PJL lines."""
    return UEL + b"".join(b"@PJL " + line + b"\r\n" for line in lines) + job + UEL


def pcl5():
    """Three sides of A4, duplex on the long edge, three copies."""
    setup = b"\x1bE\x1b&l26A\x1b&l0O\x1b&l1S\x1b&l3X"
    page = b"\x1b*p300x300YA line of text on the page."
    return setup + page + b"\f" + page + b"\f" + page + b"\f\x1bE"


def pcl5_in_pjl():
    return pjl(
        b"JOB NAME=\"Sample\"",
        b"SET COPIES=2",
        b"SET DUPLEX=ON",
        b"SET BINDING=SHORTEDGE",
        b"ENTER LANGUAGE=PCL",
        job=pcl5(),
    )


def postscript():
    page = "%%Page: {0} {0}\n%%BeginPageSetup\n%%EndPageSetup\n/Times-Roman 24 selectfont 72 700 moveto (Page {0}) show\nshowpage\n"
    text = (
        "%!PS-Adobe-3.0\n%%Title: Sample\n%%Pages: 2\n%%BoundingBox: 0 0 595 842\n%%EndComments\n"
        "%%BeginSetup\n%%BeginFeature: *Duplex DuplexNoTumble\n<< /Duplex true /Tumble false >> setpagedevice\n"
        "%%EndFeature\n%%EndSetup\n" + page.format(1) + page.format(2) + "%%Trailer\n%%EOF\n"
    )
    return pjl(b"JOB NAME=\"Sample\"", b"ENTER LANGUAGE=POSTSCRIPT", job=text.encode())


class PclXl:
    """The operators of a PCL XL stream, little endian."""

    BEGIN_SESSION, END_SESSION = 0x41, 0x42
    BEGIN_PAGE, END_PAGE = 0x43, 0x44
    OPEN_DATA_SOURCE, CLOSE_DATA_SOURCE = 0x48, 0x49

    def __init__(self):
        self.data = b") HP-PCL XL;2;0;Comment Sample\n"

    def ubyte(self, value, attribute):
        self.data += struct.pack("<BBBB", 0xC0, value, 0xF8, attribute)

    def uint16_xy(self, x, y, attribute):
        self.data += struct.pack("<BHHBB", 0xD1, x, y, 0xF8, attribute)

    def uint16(self, value, attribute):
        self.data += struct.pack("<BHBB", 0xC1, value, 0xF8, attribute)

    def operator(self, code):
        self.data += bytes([code])


def pcl_xl():
    """Two pages of A4 without marks."""
    job = PclXl()
    job.uint16_xy(600, 600, 0x89)  # UnitsPerMeasure
    job.ubyte(0, 0x86)  # Measure: inch
    job.ubyte(2, 0x8F)  # ErrorReport
    job.operator(PclXl.BEGIN_SESSION)
    job.ubyte(0, 0x88)  # SourceType
    job.ubyte(1, 0x82)  # DataOrg: low byte first
    job.operator(PclXl.OPEN_DATA_SOURCE)
    for _ in range(2):
        job.ubyte(0, 0x28)  # Orientation: portrait
        job.ubyte(2, 0x25)  # MediaSize: A4
        job.operator(PclXl.BEGIN_PAGE)
        job.uint16(1, 0x31)  # PageCopies
        job.operator(PclXl.END_PAGE)
    job.operator(PclXl.CLOSE_DATA_SOURCE)
    job.operator(PclXl.END_SESSION)
    return pjl(b"SET COPIES=1", b"ENTER LANGUAGE=PCLXL", job=job.data)


def pdf():
    """Two pages, A4 and Letter across, with a cross-reference table that is right."""
    content = b"BT /F1 24 Tf 72 700 Td (A page) Tj ET"
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 5 0 R"
        b" /Resources << /Font << /F1 6 0 R >> >> >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 792 612] /Contents 5 0 R"
        b" /Resources << /Font << /F1 6 0 R >> >> >>",
        b"<< /Length %d >>\nstream\n%s\nendstream" % (len(content), content),
        b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
    ]
    data = b"%PDF-1.4\n"
    offsets = []
    for number, body in enumerate(objects, 1):
        offsets.append(len(data))
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = len(data)
    data += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    data += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    data += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, table)
    return data


def pdf_in_pjl():
    return pjl(b"SET DUPLEX=ON", b"ENTER LANGUAGE=PDF", job=pdf())


PRINT_TICKET = """<?xml version="1.0" encoding="UTF-8"?>
<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
 xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema" version="1">
<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:ISOA4">
<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">210000</psf:Value></psf:ScoredProperty>
<psf:ScoredProperty name="psk:MediaSizeHeight"><psf:Value xsi:type="xsd:integer">297000</psf:Value></psf:ScoredProperty>
</psf:Option></psf:Feature>
<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>
<psf:Feature name="psk:JobDuplexAllDocumentsContiguously"><psf:Option name="psk:TwoSidedLongEdge"/></psf:Feature>
<psf:ParameterInit name="psk:JobCopiesAllDocuments"><psf:Value xsi:type="xsd:integer">2</psf:Value></psf:ParameterInit>
</psf:PrintTicket>
"""


def xps():
    """One empty page with a job ticket."""
    package = "http://schemas.openxmlformats.org/package/2006/"
    schema = "http://schemas.microsoft.com/xps/2005/06"
    part = "application/vnd.ms-package.xps-"
    parts = {
        "[Content_Types].xml": f'<Types xmlns="{package}content-types">'
        '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
        f'<Default Extension="fdseq" ContentType="{part}fixeddocumentsequence+xml"/>'
        f'<Default Extension="fdoc" ContentType="{part}fixeddocument+xml"/>'
        f'<Default Extension="fpage" ContentType="{part}fixedpage+xml"/>'
        '<Default Extension="xml" ContentType="application/vnd.ms-printing.printticket+xml"/></Types>',
        "_rels/.rels": f'<Relationships xmlns="{package}relationships">'
        f'<Relationship Id="R0" Type="{schema}/fixedrepresentation" Target="/FixedDocumentSequence.fdseq"/>'
        "</Relationships>",
        "_rels/FixedDocumentSequence.fdseq.rels": f'<Relationships xmlns="{package}relationships">'
        f'<Relationship Id="R1" Type="{schema}/printticket" Target="/Metadata/Job_PT.xml"/></Relationships>',
        "FixedDocumentSequence.fdseq": f'<FixedDocumentSequence xmlns="{schema}">'
        '<DocumentReference Source="/Documents/1/FixedDocument.fdoc"/></FixedDocumentSequence>',
        "Documents/1/FixedDocument.fdoc": f'<FixedDocument xmlns="{schema}">'
        '<PageContent Source="/Documents/1/Pages/1.fpage"/></FixedDocument>',
        "Documents/1/Pages/1.fpage": f'<FixedPage xmlns="{schema}" Width="793.7" Height="1122.5" xml:lang="en"/>',
        "Metadata/Job_PT.xml": PRINT_TICKET,
    }
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w") as archive:
        for name, text in parts.items():
            entry = zipfile.ZipInfo(name, (2000, 1, 1, 0, 0, 0))
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, text)
    return data.getvalue()


def jpeg():
    """A grey picture of 8 by 8 points: one block, whose only coefficient is 0."""

    def segment(marker, data):
        return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data

    def huffman(table):
        # One code of one bit, for the symbol 0: no change of the mean, and the end of the block.
        return segment(0xC4, bytes([table, 1]) + bytes(15) + bytes([0]))

    return (
        b"\xff\xd8"
        + segment(0xE0, b"JFIF\0\x01\x01\x01\x00\x48\x00\x48\x00\x00")
        + segment(0xDB, b"\0" + bytes([1] * 64))
        + segment(0xC0, struct.pack(">BHHBBBB", 8, 8, 8, 1, 1, 0x11, 0))
        + huffman(0x00)
        + huffman(0x10)
        + segment(0xDA, bytes([1, 1, 0x00, 0, 63, 0]))
        + b"\x3f"  # Two bits 0, filled with ones.
        + b"\xff\xd9"
    )


def prescribe():
    """A page that is drawn by PRESCRIBE alone."""
    return b"!R! RES; SPSZ 8; DUPX 1; COPY 2; MAP 1, 1; TEXT 'A line'; PAGE; EXIT;\r\n"


SAMPLES = {
    "jpeg.jpg": jpeg,
    "pcl5.pcl": pcl5,
    "pcl5-in-pjl.prn": pcl5_in_pjl,
    "pclxl.prn": pcl_xl,
    "pdf.pdf": pdf,
    "pdf-in-pjl.prn": pdf_in_pjl,
    "postscript.prn": postscript,
    "prescribe.prn": prescribe,
    "xps.xps": xps,
}


def main(arguments):
    if len(arguments) != 1:
        sys.exit("Usage: make_samples.py FOLDER")
    folder = pathlib.Path(arguments[0])
    folder.mkdir(parents=True, exist_ok=True)
    for name, make in SAMPLES.items():
        (folder / name).write_bytes(make())


if __name__ == "__main__":
    main(sys.argv[1:])
