#!/usr/bin/env python3
"""Writes the seeds of the fuzz targets that are easier written than collected, each named by what it shows.

Files that stand in the folders besides, such as inputs that a fuzzer found, stay as they are.
"""

import io
import pathlib
import zipfile
import zlib

UEL = b"\x1b%-12345X"
HERE = pathlib.Path(__file__).resolve().parent


def pjl(*lines, end=b"\r\n"):
    return UEL + b"".join(b"@PJL " + line + end for line in lines)


def chunk(name, number, dto="{}"):
    """A chunk; the `E` at the end of each name of a class is part of it."""
    return '{"class":"%s","id":%s,"dto":%s}' % (name, number, dto)


def metadata(*chunks, info="{}"):
    return ('{"jobInfo":%s,"chunks":[%s]}' % (info, ",".join(chunks))).encode()


def ticket(copies=b"2", mono=b"10", color=b"4", sides=b"TwoSidedLongEdge", paper=b"ISOA4"):
    def parameter(name, value):
        return b'<psf:ParameterInit name="%s"><psf:Value xsi:type="xsd:integer">%s</psf:Value></psf:ParameterInit>' % (
            name, value)

    def feature(name, option):
        return b'<psf:Feature name="%s"><psf:Option name="psk:%s"/></psf:Feature>' % (name, option)

    return (parameter(b"psk:JobCopiesAllDocuments", copies) + parameter(b"ns0000:JobTotalColorPages", color)
            + parameter(b"ns0000:JobTotalMonochromePages", mono)
            + feature(b"psk:JobDuplexAllDocumentsContiguously", sides) + feature(b"psk:PageMediaSize", paper))


TICKET_NAME = "Metadata/Job_PT.xml"


def package(*parts, method=zipfile.ZIP_DEFLATED):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w") as archive:
        for name, content in parts:
            entry = zipfile.ZipInfo(name, (2000, 1, 1, 0, 0, 0))
            entry.compress_type = method
            archive.writestr(entry, content)
    return data.getvalue()


JOBS = {
    "empty": b"",
    "unknown_bytes": bytes(range(256)),
    "uel_alone": UEL,
    "uel_cut_short": UEL[:5],
    "uel_inside_data": b"data" + UEL + b"data",
    "pjl_then_pcl": pjl(b"SET COPIES=2", b"ENTER LANGUAGE=PCL") + b"\x1bEtext\x0c\x1bE" + UEL,
    "pjl_then_postscript": pjl(b"SET DUPLEX=ON", b"SET BINDING=SHORTEDGE", b"ENTER LANGUAGE=POSTSCRIPT")
    + b"%!PS\n%%Pages: 1\nshowpage\n" + UEL,
    "pjl_then_pclxl": pjl(b"ENTER LANGUAGE=PCLXL") + b") HP-PCL XL;2;0\n\xd1" + UEL,
    "pjl_then_pdf": pjl(b"ENTER LANGUAGE = PDF", end=b"\n") + b"%PDF-1.4\n%%EOF\n" + UEL,
    "pjl_language_unknown": pjl(b"ENTER LANGUAGE=NOBODY") + b"body",
    "pjl_enter_without_language": pjl(b"ENTER PCL"),
    "pjl_then_escape": pjl(b"SET COPIES=2") + b"\x1bE",
    "pjl_then_prescribe": pjl(b"SET KTRAPPING=2") + b"!R! COPY 2;EXIT;" + UEL,
    "pjl_blocks_in_a_row": pjl(b"JOB NAME=\"a\"") + pjl(b"SET PAPER=A4") + pjl(b"EOJ") + UEL,
    "pjl_without_closing_uel": pjl(b"EOJ"),
    "pjl_text_between_lines": pjl(b"SET COPIES=3") + b"lost\n@PJL EOJ\r\n" + UEL,
    "pjl_two_commands_in_a_line": pjl(b"COMMENT A @PJL SET QTY=2"),
    "pjl_at_sign_in_a_line": pjl(b"COMMENT 5@6"),
    "pjl_empty_line": UEL + b"@PJL\r\n",
    "pjl_small_letters": UEL + b"@pjl set copies=2\r\n",
    "pjl_line_of_1024_bytes": UEL + b"@PJL" + b"x" * 1024 + b"\r\n",
    "pjl_line_of_1025_bytes": UEL + b"@PJL" + b"x" * 1025 + b"\r\n",
    "pjl_carriage_return_alone": UEL + b"@PJL SET COPIES=2\rX",
    "pjl_control_byte": UEL + b"@PJL SET COPIES=2\x01\n",
    "pjl_cut_in_a_line": UEL + b"@PJL SET COP",
    "pjl_bytes_above_ascii": pjl(b"SET JOBNAME=\"\xfcber \xff\xfe\"", b"JOB NAME=\"Pr\xc3\xbcfung\""),
    "pjl_nul_in_a_line": UEL + b"@PJL COMMENT a\x00b\r\n",
    "comment_info": pjl(b"COMMENT \"INFO:DUPLEX ON;QTY 3\"", b"SET BINDING=LONGEDGE"),
    "comment_info_quantity_is_no_number": pjl(b"COMMENT \"INFO:QTY x\""),
    "comment_info_quantity_too_great": pjl(b"COMMENT \"INFO:QTY 99999999999\""),
    "comment_brands": pjl(b"COMMENT Lexmark", b"COMMENT TOSHIBA", b"COMMENT \"DriverName=Samsung",
                          b"COMMENT \"HP Universal x"),
    "ticket_copies_and_sides": pjl(b"XCPT <copies syntax=\"integer\">4</copies>",
                                   b"XCPT <sides syntax=\"keyword\">two-sided-long-edge</sides>"),
    "ticket_copies_are_no_number": pjl(b"XCPT <copies>x</copies>"),
    "copies_beyond_all_limits": pjl(b"SET COPIES=20000", b"SET QTY=-1", b"SET COPIES=99999999999"),
    "finishing_of_options": pjl(b"SET PROCESSINGTYPE=\"STAPLING\"", b"SET PROCESSINGOPTION=\"LEFT_1PT\"",
                                b"SET PROCESSINGTYPE=\"PUNCH\"", b"SET PROCESSINGOPTION=\"RIGHT_4PT\"",
                                b"SET PROCESSINGTYPE=\"BOOKLET_MAKER\"", b"SET PROCESSINGOPTION=\"X\""),
    "finishing_option_without_quotes": pjl(b"SET PROCESSINGTYPE=\"PUNCH\"", b"SET PROCESSINGOPTION=LEFT"),
    "finishing_words": pjl(b"SET FINISH=STAPLE", b"SET STAPLE=RIGHTTOP", b"SET PUNCHHOLE=US3",
                           b"SET KFEEDEDGE=SHORTEDGE", b"SET KPUNCHOPTION=MAIN", b"SET DRIVERNAME=\"SHARP\"",
                           b"SET STAPLEOPTION=ONE", b"SET OKIPUNCH=1"),
    "modes": pjl(b"SET KCOLORMODE=MONO", b"SET ECOPRINT=ON", b"SET DATAMODE=GRAYSCALE", b"SET PLANESINUSE=1",
                 b"SET ECONOMODE=ON", b"SET HOSTPRINTERNAME=\"RICOH\"", b"SET LPARM:PDF KMULTIPAGE=FOUR"),
    "signature_pcl": b"\x1bE\x1b&l2A\x1b&l1S\x1b*b3Wabctext\x0c\x1bE",
    "signature_postscript": b"%!PS-Adobe-3.0\n%%Pages: 2\n%%BeginFeature: *Duplex None\n%%EOF\n",
    "signature_pdf": b"%PDF-1.4\n1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\ntrailer <</Root 1 0 R>>\n",
    "signature_jpeg": b"\xff\xd8\xff\xe0\x00\x10JFIF\x00\xff\xd9",
    "signature_prescribe": b"!R! COPY 2;UNIT C;EXIT;",
    "signature_pclxl": b") HP-PCL XL;2;0;Comment\n\xc0\x00\xf8\x86\x41\x42",
    "signature_xps": b"PK\x03\x04\x14\x00\x00\x00\x00\x00" + bytes(20) + b"PK\x05\x06" + bytes(18),
    "signature_urf": b"UNIRAST\x00\x00\x00\x00\x01",
}

METADATA = {
    "empty_job": metadata(),
    "every_chunk": metadata(
        chunk("UelE", 2), chunk("PjlCmdE", 3, '{"cmd":"SET","param":"COPIES=2"}'),
        chunk("PjlCmdBase64StringE", 4, '{"cmd":"JOB","param":"TkFNRT0iYSI="}'), chunk("FormFeedE", 5),
        chunk("FirstPageStartE", 6), chunk("RawDataE", 7, '{"offset":0,"size":9}'),
        chunk("TextE", 8, '{"text":"ab"}'), chunk("PrescribeE", 9, '{"ofs":0,"size":4}'),
        chunk("PsCommentE", 11, '{"comment":"%%EOF\\n"}'),
        chunk("PdfDocumentInfoE", 11, '{"info":"1 0 obj\\n<</Type/Catalog>>\\nendobj\\ntrailer<<>>startxref0\\n"}'),
        chunk("PdfE", 12, '{"pdf":"%PDF-"}'),
        chunk("PclEscE", 10, '{"opGroupParam":2518081,"binOffset":0,"binSize":0,"value":"26"}')),
    "comment_with_zero_byte": metadata(chunk("PsCommentE", 2, '{"comment":"%%a\\u0000b"}')),
    "payload_behind_two_bytes": metadata(
        chunk("PclEscE", 2, '{"opGroupParam":4521984,"binOffset":0,"binSize":3,"value":""}')),
    "every_fact": metadata(info='{"version":1,"pdl":2,"copies":3,"duplex":1,"monoCount":1,"grayCount":2,'
                                '"colorCount":3,"paper":5,"pjl":true,"forceMono":true,"ecoMode":true,'
                                '"stapling":101,"punching":3,"orientation":1,"pagesPerSheet":2,'
                                '"originalBrand":3,"fonts":["a","b"]}'),
    "full_class_name": metadata(chunk("JobParser::ChunkUelE", 2)),
    "full_class_name_without_chunk": metadata(chunk("JobParser::UelE", 2)),
    "full_class_name_of_no_tag": metadata(chunk("JobParser::ChunkUel", 2)),
    "unknown_class": metadata(chunk("Nobody", 2)),
    "reference": metadata(chunk("UelE", 2), "2", "2"),
    "reference_to_nobody": metadata("7"),
    "reference_beyond_32_bits": metadata(chunk("UelE", 2), "4294967298"),
    "same_id_twice": metadata(chunk("UelE", 2), chunk("FormFeedE", 2), "2"),
    "id_below_zero": metadata(chunk("UelE", -1), "-1"),
    "null_chunk": metadata("null", chunk("UelE", 2)),
    "chunk_is_a_string": metadata('"Uel"'),
    "range_of_negative_size": metadata(chunk("RawDataE", 2, '{"offset":0,"size":-1}')),
    "range_before_the_job": metadata(chunk("RawDataE", 2, '{"offset":-1,"size":1}')),
    "range_behind_the_job": metadata(chunk("RawDataE", 2, '{"offset":4611686018427387904,"size":1}')),
    "range_over_the_end": metadata(chunk("RawDataE", 2, '{"offset":30,"size":9223372036854775807}')),
    "sizes_that_overflow": metadata(
        chunk("RawDataE", 2, '{"offset":0,"size":9223372036854775807}'), "2", "2"),
    "sizes_as_reals": metadata(chunk("RawDataE", 2, '{"offset":0.5,"size":1e300}')),
    "chunks_are_an_object": b'{"jobInfo":{},"chunks":{}}',
    "without_record": b'{"chunks":[]}',
    "record_is_null": b'{"jobInfo":null,"chunks":[]}',
    "record_of_strings": metadata(info='{"copies":"3"}'),
    "numbers_without_names": metadata(info='{"pdl":77,"duplex":-5,"paper":99,"stapling":42,"orientation":9}'),
    "text_of_any_bytes": metadata(chunk("TextE", 2, '{"text":"\\u0000\\u001b\\u00ff\\ud83d\\ude00"}')),
    "command_of_any_bytes": metadata(chunk("PjlCmdE", 2, '{"cmd":"\\u0000","param":"\\r\\n\\ufffd"}')),
    "base64_that_is_none": metadata(chunk("PjlCmdBase64StringE", 2, '{"cmd":"A","param":"*"}')),
    "command_empty": metadata(chunk("PjlCmdE", 2, '{"cmd":"","param":"COPIES=2"}')),
}

JSON = {
    "literals": b'[null,true,false]',
    "integers": b'[0,-1,2147483647,2147483648,-2147483649,9223372036854775807,18446744073709551615]',
    "integer_beyond_64_bits": b'18446744073709551616',
    "reals": b'[0.0,-0.0,1e308,5e-324,2.0,1.5E+3]',
    "real_beyond_all_limits": b'1e999',
    "strings": b'["","a","\\"\\\\\\/\\b\\f\\n\\r\\t","\\u0000","\\u001f","\\u007f","\\u00fc"]',
    "surrogates": b'["\\ud83d\\ude00"]',
    "surrogate_alone": b'["\\ud83d"]',
    "surrogates_reversed": b'["\\ude00\\ud83d"]',
    "invalid_utf8": b'["\xff\xfe"]',
    "overlong_utf8": b'["\xc0\xaf"]',
    "bytes_above_ascii": bytes(range(128, 256)),
    "private_use": "[\"\uf700\uf780\uf7ff\ue000\U0010ffff\U000f0000\"]".encode(),
    "key_twice": b'{"a":1,"a":[2]}',
    "key_with_nul": b'{"a\\u0000b":1,"a":2}',
    "nesting_of_64": b"[" * 64 + b"]" * 64,
    "nesting_of_65": b"[" * 65 + b"]" * 65,
    "nesting_unclosed": b"[" * 4000,
    "blanks": b' \t\r\n{ "a" : [ 1 , 2 ] } ',
    "byte_order_mark": b'\xef\xbb\xbf[]',
    "text_behind_the_value": b'[] []',
    "empty": b"",
    "cut_in_a_string": b'["abc',
    "comma_at_the_end": b'[1,]',
}

PCL5 = {
    "combined": b"\x1b&l26a1o2s3Xtext\x0c\x1bE",
    "combined_and_cut_short": b"\x1b&l1a\x1bE",
    "payload": b"\x1b*b5W\x1b\x0c!R!text",
    "payload_beyond_the_end": b"\x1b*b2147483647Wabc",
    "payload_of_negative_size": b"\x1b*b-1W",
    "payload_in_lower_case": b"\x1b*b3wabc",
    "two_byte_text": b"\x1b&t31P\x81\x0c\x1b&t0P\x81\x0c",
    "value_of_14_bytes": b"\x1b&l12345678901234X",
    "value_of_15_bytes": b"\x1b&l123456789012345X",
    "prescribe_inside": b"a!R! COPY 2;EXIT;b\x0c",
    "cut_uel": b"\x1b%-123",
    "invalid_operation": b"\x1b ",
    "empty": b"",
}

POSTSCRIPT = {
    "empty": b"",
    "comments": b"%!PS-Adobe-3.0\n%%Pages: 1\r\n\r\n%%EOF\n",
    "comment_without_line_end": b"%!PS\n%%EOF",
    "comment_with_control_byte": b"%%a\tb\n%%c\x00d\n",
    "comment_of_255_bytes": b"%%" + b"x" * 253 + b"\n%%" + b"x" * 254 + b"\n",
    "comment_of_many_line_ends": b"%%a\n" + b"\r\n" * 130 + b"b\n",
    "control_bytes": b"\x04%%a\n\x01M%%b\n\x01%%c\n",
    "cut_uel": b"a\n\x1b%-1234\n" + UEL[:5],
    "uel_inside": b"%%a\n" + UEL + b"%%b\n" + pjl(b"ENTER LANGUAGE=POSTSCRIPT") + b"%%c\n",
    "prescribe_inside": b"%%!R! COPY 2;EXIT;\n%%EOF\n",
    "duplex": b"%%BeginFeature: *Duplex DuplexNoTumble\nx\n%%EndFeature\n%%BeginFeature: Duplex ShortEdge\n",
    "punch": b"%%BeginFeature: *Punch main\n%%BeginFeature: punch off\n%%BeginFeature: staple on\n",
    "staple": b"%%BeginFeature: *Staple 1\n<< /Staple 3 /StaplePosition 1 >> setpagedevice\n%%EndFeature\n",
    "staple_of_hp": b"%%BeginFeature: *StapleLocation x\n<</MediaProcessingOption (LEFT_2PT)>>\n%%EndFeature\n",
    "viewing_orientation": b"%%ViewingOrientation: 0 1 -1 0\n%%ViewingOrientation: -1\n",
    "rotation": b"%%ViewingOrientation: 0 -1 1 0\n180 neg rotate \n%%EndPageSetup\n",
    "rotation_by_a_quarter": b"x -90 rotate\n%%EndPageSetup\n",
    "matrices": b"[1 0 0 -1 0 0] + G ................\n%%EndPageSetup\nq[0 1 -1 0 0 0]cm ................\n",
    "matrix_of_words": b"x\n%%EndPageSetup\n[a b c d e f]msf ................\n",
    "matrix_beyond_the_page": b"x\n%%EndPageSetup\n[\n%%a 1 0 0 1 0 0]msf\n%%Page: 2 2\n",
    "brackets": b"x\n%%EndPageSetup\n" + b"[" * 300 + b"\n",
}

PRESCRIBE = {
    "empty": b"",
    "driver_summary": b' CMNT "Color=6","Mono=4"; CMNT "Page=1"; EXIT;',
    "driver_pages": b" CMNT Page=0; CMNT 'Page=1'; EXIT;",
    "driver_paper": b' CMNT "PaperSize=A4"; SPSZ 10; DUPX 2; EXIT;',
    "name_of_five_letters": b" ABCDE;",
    "parameters_of_128": b" A " + b",".join([b"1"] * 128) + b";",
    "parameters_of_129": b" A " + b",".join([b"1"] * 129) + b";",
    "text_between": b" RES; " + b"x" * 120 + b"; EXIT; !R! exit;",
    "quotes": b" A \"x;,'\" y , '\"' ;",
    "cut": b" COPY 2",
}

JOB = (pjl(b'JOB NAME="a" DISPLAY="b"', b"SET QTY=1", b"SET QTY=2", b"ENTER LANGUAGE=PCL") + b"\x1bEtext\x0c\x1bE" + UEL
       + b'@PJL EOJ NAME="a"\r\n' + UEL)
GROUP = (b"SET PROCESSINGACTION=APPEND", b"SET PROCESSINGTYPE=X", b"SET PROCESSINGOPTION=Y",
         b"SET PROCESSINGBOUNDARY=MOPY")


def rewriting(*steps, job=JOB):
    return b"".join(step + b"\n" for step in steps) + b"\n" + job


REWRITING = {
    "no_steps": rewriting(),
    "no_steps_and_no_job": b"",
    "set_and_add": rewriting(b"s|QTY|3", b"q|QTY|3", b"a|QTY|3", b"b|QTY|3", b"n|QTY|abc"),
    "set_without_enter": rewriting(b"s|QTY|3", job=pjl(b"SET QTY=1") + UEL),
    "enter_is_replaced": rewriting(b"c|ENTER|LANGUAGE|PDF", b"s|QTY|3"),
    "wrap_and_set": rewriting(b"w|a job|x", b"s|QTY|3", b"j|other", job=b"\x1bEtext"),
    "wrap_twice": rewriting(b"w|a", b"x", b"w|b", job=b"%!PS"),
    "parameters": rewriting(b"p|NAME|\"x\"", b"p|DISPLAY|y", b"p|NEW|z"),
    "name_with_quotation_mark": rewriting(b"j|a\"b", b"p|NAME|c"),
    "finishing_twice": rewriting(b"f|\"STAPLING\"|\"LEFT_1PT\"", b"f|\"STAPLING\"|\"TOP_2PT\"", b"f|\"PUNCH\"|\"X\""),
    "finishing_groups_in_a_row": rewriting(b"f|X|Y", job=pjl(*GROUP, *GROUP, b"SET A=1", *GROUP, b"ENTER LANGUAGE=PCL")),
    "finishing_boundaries_in_a_row": rewriting(b"f|X|Y", job=pjl(*GROUP, GROUP[3], GROUP[3], b"ENTER LANGUAGE=PCL")),
    "finishing_before_its_start": rewriting(b"f|X|Y", job=pjl(*GROUP[1:], GROUP[3], b"SET A=1", b"SET B=1", b"ENTER PCL")),
    "code": rewriting(b"t|@PJL COMMENT x", b"t|"),
    "unset": rewriting(b"u|QTY|1", b"1|Q", b"*|", b"u|QTY|9"),
    "strip_everything": rewriting(b"x", b"y", job=pjl(b"SET A=1") + b"!R! COPY 2;EXIT;" + UEL),
    "values_of_any_bytes": rewriting(b"s|\xff\x00|\x1b%-12345X@PJL SET A=1\r"),
    "malformed_job": rewriting(b"w|a", b"s|QTY|3", job=UEL + b"@PJL \x01"),
}


XPS = {
    "empty": b"",
    "ticket": package(("a.xml", b"<a/>"), (TICKET_NAME, ticket()), ("b.xml", b"<b/>")),
    "ticket_stored": package((TICKET_NAME, ticket()), method=zipfile.ZIP_STORED),
    "two_tickets": package((TICKET_NAME, ticket()), ("metadata/job_pt.xml.2", ticket(copies=b"3"))),
    "no_ticket": package(("a.xml", b"<a/>")),
    "no_parts": package(),
    "long_name": package((TICKET_NAME + "x" * 281, ticket()), ("y" * 300, b"")),
    "encrypted": package((TICKET_NAME, ticket())).replace(b"\x14\0\0\0\x08", b"\x14\0\1\0\x08"),
    "unknown_method": package((TICKET_NAME, ticket())).replace(b"\x14\0\0\0\x08", b"\x14\0\0\0\x63"),
    "directory_outside": package((TICKET_NAME, ticket()))[:-6] + b"\xff\xff\xff\x7f\0\0",
    "cut": package((TICKET_NAME, ticket()))[:-30],
    "ticket_text": ticket(),
    "ticket_text_with_blanks": ticket(copies=b" 2", mono=b"3\n", color=b"", sides=b"Manual", paper=b"Custom"),
    "ticket_text_unclosed": ticket()[:-8],
    "paper_text": b'name="psk:PageMediaSize">\n<psf:Option a="b" name="psk:ISOA3" name="psk:',
}


def value(tag, data, attribute):
    return bytes([tag]) + data + bytes([0xF8, attribute])


def text(data, attribute):
    return value(0xC8, bytes([0xC0, len(data)]) + data, attribute)


PCLXL = {
    "empty": b"",
    "session": value(0xD1, b"\x58\x02\x58\x02", 137) + value(0xC0, b"\x02", 143) + b"A" + b"B",
    "page": value(0xC0, b"\x01", 40) + value(0xC0, b"\x02", 37) + value(0xC0, b"\x01", 53) + b"C"
    + value(0xC1, b"\x02\x00", 49) + b"DB",
    "page_of_a_name": text(b"A4", 37) + value(0xC0, b"\x00", 52) + b"CDB",
    "page_of_a_wide_name": value(0xC9, b"\xc0\x02A\x004\x00", 37) + b"CB",
    "copies_that_are_no_number": value(0xD1, b"\x01\x00\x01\x00", 49) + b"DB",
    "fonts": text(b"Courier", 168) + b"O" + text(b"\xff\x00", 168) + b"OB",
    "comment_with_prescribe": text(b"!R! COPY 2;EXIT;", 129) + b"GB",
    "comments_with_prescribe": text(b"x!R! COPY 2;", 129) + b"G" + text(b"EXIT;!R!EXIT;", 129) + b"GB",
    "comment_of_lexmark": text(b"Lexmark Enhanced", 129) + b"G" + value(0xC0, b"\x11", 37) + b"CB",
    "comment_that_is_no_text": value(0xC0, b"!", 129) + b"GB",
    "operators_without_meaning": bytes(range(0x48, 0x4F)) + bytes(range(0x50, 0xC0)) + b"B",
    "text_and_vectors": text(b"some text", 171) + b"\xa8" + value(0xD3, b"abcd", 76) + b"\x6b"
    + value(0xE1, b"12345678", 66) + b"\xa0B",
    "wide_identifier": b"\xc0\x02\xf9\x00\x25CB",
    "embedded_data": b"\xb0\xfa\x03\x00\x00\x00abc\xfb\x01dDB",
    "embedded_data_empty": b"\xfa\x00\x00\x00\x00B",
    "embedded_data_beyond_the_end": b"\xfa\xff\xff\xff\xffB",
    "array_of_4_GiB": b"\xc8\xc2\xff\xff\xff\xff\xf8\x25CB",
    "array_of_more_than_4_GiB": b"\xca\xc2\x01\x00\x00\x40\xf8\x25CB",
    "array_of_no_type": b"\xce\xc0\x00\xf8\x25CB",
    "array_length_of_no_type": b"\xc8\xc3",
    "tag_that_is_none": b" ",
    "tag_that_is_refused": b"\xd6",
    "tag_255": b"\xff",
    "identifier_that_is_none": b"\xc0\x01\xc0",
    "cut": value(0xC0, b"\x02", 37) + b"C",
}

VALUE = chunk("PclXLAttributeValueE", 3, '{"value":[2],"data_type":192}')
ATTRIBUTE = chunk("PclXLAttributeE", 2, '{"attribute":37,"chunk":%s}' % VALUE)


def watermark(number, *chunks, size=0):
    return chunk("PclXLWatermarkE", number, '{"size":%d,"chunks":[%s]}' % (size, ",".join(chunks)))


PCLXL_METADATA = {
    "page": chunk("PclXLRawE", 9, '{"start":0,"end":15}') + ","
    + chunk("PclXLOperatorE", 8, '{"operator":67,"start":16,"end":20,"attributes":[%s,2]}' % ATTRIBUTE),
    "attribute_of_a_range": chunk("PclXLAttributeE", 2, '{"attribute":37,"chunk":%s}'
                                  % chunk("PclXLRawE", 3, '{"start":16,"end":17}')),
    "attribute_without_a_value": chunk("PclXLAttributeE", 2, '{"attribute":37,"chunk":null}'),
    "attribute_of_an_operator": chunk("PclXLAttributeE", 2, '{"attribute":37,"chunk":%s}'
                                      % chunk("PclXLOperatorE", 3,
                                              '{"operator":68,"start":0,"end":-9,"attributes":[]}')),
    "operator_of_a_value": chunk("PclXLOperatorE", 2, '{"operator":67,"start":0,"end":0,"attributes":[%s]}' % VALUE),
    "array": chunk("PclXLAttributeValueE", 2, '{"value":[1,2,3],"data_type":201,"array_length_type":194}'),
    "array_without_length_type": chunk("PclXLAttributeValueE", 2, '{"value":[1,2],"data_type":200}'),
    "array_of_no_type": chunk("PclXLAttributeValueE", 2, '{"value":[],"data_type":206,"array_length_type":192}'),
    "array_of_no_length_type": chunk("PclXLAttributeValueE", 2,
                                     '{"value":[],"data_type":200,"array_length_type":200}'),
    "range_of_negative_size": chunk("PclXLRawE", 2, '{"start":9,"end":0}'),
    "range_of_all_numbers": chunk("PclXLRawE", 2,
                                  '{"start":-9223372036854775808,"end":9223372036854775807}'),
    "embedded_data": chunk("PclXLEmbeddedDataE", 2, '{"data":%s}'
                           % chunk("PclXLRawWithDataE", 3, '{"rawData":"00fFgx1"}')),
    "embedded_data_empty": chunk("PclXLEmbeddedDataE", 2, '{"data":null}'),
    "embedded_data_of_negative_size": chunk("PclXLEmbeddedDataE", 2, '{"data":%s}' % watermark(3, size=-5)),
    "watermark": watermark(2, chunk("UelE", 3), "null", "3"),
    "watermarks_that_double": ",".join(
        [watermark(2)] + [watermark(n, str(n - 1), str(n - 1)) for n in range(3, 30)]),
    "watermarks_that_nest": ",".join([watermark(2)] + [watermark(n, str(n - 1)) for n in range(3, 70)]),
}


def deflated(entries, data):
    packed = zlib.compress(data, 9)
    return b"<<" + entries + b"/Filter/FlateDecode/Length %d>>stream\n" % len(packed) + packed + b"\nendstream"


def pdf(*objects, trailer=b"<</Root 1 0 R/Size 9>>"):
    """Objects with their numbers, and a trailer behind them."""
    body = b"%PDF-1.7\n" + b"".join(b"%d 0 obj " % number + value + b" endobj\n" for number, value in objects)
    return body + b"xref\n0 0\ntrailer" + trailer + b"\nstartxref\n%d\n%%%%EOF\n" % len(body)


CATALOG = (1, b"<</Type/Catalog/Pages 2 0 R>>")
NODE = (2, b"<</Type/Pages/Kids[3 0 R]/MediaBox[0 0 595 842]/Resources 5 0 R>>")
PAGE = (3, b"<</Type/Page/Parent 2 0 R/Contents 4 0 R>>")

PDF = {
    "empty": b"",
    "one_page": pdf(CATALOG, NODE, PAGE, (5, b"<</Font<</F 9 0 R>>/XObject 6 0 R>>"), (4, b"[7 0 R 8 0 R]")),
    "direct_length": pdf(CATALOG, NODE, PAGE, (7, b"<</Length 3>>stream\nabc\nendstream")),
    "indirect_length": pdf(CATALOG, NODE, PAGE, (7, b"<</Length 8 0 R>>stream\nendstrendstream\nendstream")),
    "wrong_length": pdf(CATALOG, NODE, PAGE, (7, b"<</Length 2>>stream\nabcd\nendstream")),
    "object_stream": pdf((7, deflated(b"/Type/ObjStm/N 3/First 14",
                                      b"1 0 2 29 3 57 <</Type/Catalog/Pages 2 0 R>><</Type/Pages/Kids[3 0 R]>> "
                                      b"<</Type/Page>>"))),
    "object_stream_without_length": pdf(CATALOG, NODE, PAGE, (7, deflated(b"/Length 8 0 R/Type/ObjStm/N 1/First 4",
                                                                          b"8 0 [1] "))),
    "object_stream_of_nothing": pdf(CATALOG, NODE, PAGE, (7, deflated(b"/Type/ObjStm/N 0/First 0", b""))),
    "object_stream_not_compressed": pdf((7, b"<</Type/ObjStm/Length 3>>stream\nabc\nendstream")),
    "cross_reference_stream": b"%PDF-1.7\n" + b"9 0 obj<</Type/XRef/Root 1 0 R/Size 9/W[1 2 1]/Length 1>>stream\nx\n"
                              b"endstream endobj 1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                              b"2 0 obj<</Type/Pages/Kids[]>>endobj startxref 9\n",
    "two_revisions": pdf(CATALOG, NODE, PAGE) + pdf(PAGE)[9:],
    "encrypted": pdf(CATALOG, NODE, PAGE, trailer=b"<</Root 1 0 R/Size 9/Encrypt<<>>/ID[<00><01>]>>"),
    "values": pdf(CATALOG, NODE, (3, b"<</Type/Page/A[1 2 3 R 1.5 -.5 +5 true false null(a\\)(b))<00>/N#41]/B 1 2 /A 3>>")),
    "nesting": pdf((3, b"[" * 500 + b"<</A" * 100 + b" 1" + b">>" * 100 + b"]" * 500)),
    "parents_loop": pdf(CATALOG, (2, b"<</Type/Pages/Kids[3 0 R]/Parent 2 0 R>>"), PAGE),
    "tree_loops": pdf(CATALOG, (2, b"<</Type/Pages/Kids[2 0 R]>>")),
    "references_loop": pdf(CATALOG, NODE, PAGE, (5, b"6 0 R"), (6, b"5 0 R")),
    "generation": pdf(CATALOG, NODE, PAGE) + b"5 1 obj[]endobj startxref 5\n",
    "summary": b"1 0 obj\n<</Pages 2 0 R/Type/Catalog>>\nendobj\n3 0 obj\n<</MediaBox[ 0 0 1 2.5]/Type/Page>>\nendobj\n"
               b"trailer<</Prev 9/Root 1 0 R/Size 4>>startxref0\n",
}


def row(data, letter=b"W"):
    return b"\x1b*b%d%s" % (len(data), letter) + data


def xl(tag, value, attribute):
    return bytes([tag]) + value + bytes([0xF8, attribute])


def xl_picture(compression, data):
    return (xl(0xC0, b"\x02", 37) + b"\x43" + xl(0xC0, b"\x02", 3) + b"\x6a" + xl(0xC0, b"\x02", 98)
            + xl(0xC0, b"\x00", 100) + xl(0xC1, b"\x02\x00", 108) + xl(0xC1, b"\x02\x00", 107) + b"\xb0"
            + xl(0xC1, b"\x02\x00", 99) + xl(0xC0, bytes([compression]), 101) + b"\xb1"
            + b"\xfa" + len(data).to_bytes(4, "little") + data + b"\xb2" + xl(0xC1, b"\x02\x00", 49) + b"\x44")


NAME = xl(0xC8, b"\xc0\x01x", 139)
WORKER_PCL = {
    "empty": b"",
    "text": b"\x1bE\x1b&l26a1o2Xtext\x0c\x1bE",
    "planes": b"\x1b*r-3U\x1b*r1A\x1b*b2M" + row(b"\xfe\x11", b"V") + row(b"\xfe\x22", b"V") + row(b"\xfe\x33"),
    "delta_rows": b"\x1b*r-4U\x1b*b3M" + row(b"\x1f\xff\x02\xaa", b"V") + row(b"\x21\x01\x02"),
    "replacement_delta": b"\x1b*b9M" + row(b"\x9f\x04\xaa\x07\x01xxxxxxxxx"),
    "adaptive": b"\x1b*b5M" + row(b"\x01\x00\x02\x03\xff\x04\x00\x05\x03\x00\x01\x01"),
    "configured": b"\x1b*v6W\x00\x03\x08\x08\x08\x08" + row(b"\xff\x00\x00") + b"\x1b*v1a2b3c4I",
    "inks": b"\x1b*g14W\x02\x02\x01\x2c\x01\x2c\x00\x04\x01\x2c\x01\x2c\x00\x02" + row(b"\x01"),
    "inks_without_any": b"\x1b*r-4U\x1b*g3W\x02\x02\x2a" + row(b"\x01", b"V") + row(b"\x01"),
    "macros": b"\x1b&f1y0Xa\x1b&f2y3X\x1b&f1X\x1b&f2y0X\x1b&f1y2X\x1b&f1X\x1b&f2X\x1b&f4X\x0c",
    "hpgl": b"\x1b%0BIN;SP1;PU0,0;PD9,9;PE:\xc3<=\xc0\xc0;LBx\x03;PM0;PM2;FP;\x1b%0A",
    "macros_deleted": b"\x1b&f1y0Xa\x1b&f1x10X\x1b&f2y0Xb\x1b&f1X\x1bE\x1b&f1y3X\x1b&f2y8X\x1b&f2X\x1b&f7X\x1b&f6X",
    "palettes": b"\x1b*p0P\x1b*r3U\x1b*v1S\x1b*p1Pa",
    "xl_page": xl(0xC0, b"\x02", 37) + b"\x43" + xl(0xC8, b"\xc0\x03\xff\x00\x00", 11) + b"\x63\xa0\x44",
    "xl_plain": xl_picture(0, b"\xff\x00\x00" * 5),
    "xl_run_length": xl_picture(1, b"\xf1\xff\x02abc"),
    "xl_jpeg": xl_picture(2, b"\xff\xd8\xff\xe0"),
    "xl_delta_row": xl_picture(3, b"\x04\x00\x40\xff\xff\xff\x02\x00\x01\x00"),
    "xl_stream": NAME + b"\x5b\x5c\xfb\x14) HP-PCL XL;2;0\n" + b"\xa0\xc8\xc0\x01" + b"\x5c\xfb\x04x\xf8\x8b\x5e\x5d"
    + xl(0xC0, b"\x02", 37) + b"\x43" + NAME + b"\x5e\x44" + NAME + b"\x5f",
    "xl_long_array": b"\xc8\xc2\xff\xff\xff\x7fabc",
}


BODIES = {
    "empty": b"",
    "bare": b"\x1bEtext\x0c",
    "two": pjl(b"ENTER LANGUAGE=PCL") + b"text\x0c" + pjl(b"ENTER LANGUAGE=PDF") + b"%PDF-1.4 \x1b" + UEL,
    "filler": UEL + b"\r\n\x00\x04" + pjl(b"SET COPIES=3"),
    "block": pjl(b"ENTER LANGUAGE=POSTSCRIPT") + b"%!PS\n!R! COPY 2; EXIT;\nshowpage\n" + UEL,
    "guessed_block": b"\x1bEtext!R! UNIT C; PAGE; EXIT;more\x0c",
    "xl": pjl(b"ENTER LANGUAGE=PCLXL") + b") HP-PCL XL;2;0\n!R!\xc0\x02\xf8\x25\x43\x44" + UEL,
}


def main():
    for target, seeds in {
        "BodyFinderFuzz": BODIES,
        "JobFuzz": JOBS,
        "JsonFuzz": JSON,
        "MetadataFuzz": METADATA,
        "Pcl5Fuzz": PCL5,
        "PclXlFuzz": PCLXL,
        "PclXlMetadataFuzz": PCLXL_METADATA,
        "PdfFuzz": PDF,
        "PostScriptFuzz": POSTSCRIPT,
        "PrescribeFuzz": PRESCRIBE,
        "RewritingFuzz": REWRITING,
        "WorkerPclFuzz": WORKER_PCL,
        "XpsFuzz": XPS,
    }.items():
        folder = HERE / (target + "_corpus")
        folder.mkdir(exist_ok=True)
        for name, content in seeds.items():
            (folder / name).write_bytes(content.encode() if isinstance(content, str) else content)


if __name__ == "__main__":
    main()
