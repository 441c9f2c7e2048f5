"""extract_streams.py FILE FOLDER: every stream of a compound file as a file of its name, if olefile finds no fault."""
import pathlib
import sys

import olefile

with olefile.OleFileIO(sys.argv[1], raise_defects=olefile.DEFECT_INCORRECT) as compound:
    # MS-CFB has who saves in transactions count them in the header; olefile takes that for unusual.
    doubts = [text for _, text in compound.parsing_issues if "transaction_signature_number" not in text]
    if doubts:
        sys.exit("\n".join(doubts))
    for path in compound.listdir():
        pathlib.Path(sys.argv[2], *path).write_bytes(compound.openstream(path).read())
