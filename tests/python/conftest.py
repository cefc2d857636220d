import pathlib

import pytest

UEL = b"\x1b%-12345X"
PCL_JOB = UEL + b'@PJL JOB NAME="old"\r\n@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bEtext' + UEL


@pytest.fixture
def job_path(tmp_path: pathlib.Path) -> pathlib.Path:
    path = tmp_path / "job.prn"
    path.write_bytes(PCL_JOB)
    return path
