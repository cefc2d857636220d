"""The reference of the public headers is made without a warning. DOXYGEN is the program, DOXYFILE its settings."""

import os
import pathlib
import subprocess
import tempfile
import unittest


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.done = cls.make(os.environ["DOXYFILE"])

    @classmethod
    def make(cls, settings):
        environment = {**os.environ, "REFERENCE": str(cls.folder)}
        return subprocess.run([os.environ["DOXYGEN"], settings], env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=500)

    def page(self, name):
        return (self.folder / "html" / name).read_text(encoding="utf-8")

    def test_is_made_without_a_warning(self):
        self.assertEqual((self.done.returncode, self.done.stdout), (0, ""))

    def test_tells_of_the_c_interface(self):
        page = self.page("JobParserC_8h.html")

        self.assertIn("jobParserParse", page)
        self.assertIn("jobParserRewrite", page)

    def test_tells_of_the_classes(self):
        self.assertIn("malformed job is logged", self.page("classJobParser_1_1Parser.html"))
        self.assertIn("mapped", self.page("classJobParser_1_1JobFile.html"))

    def test_would_tell_of_a_wrong_parameter(self):
        header = self.folder / "Wrong.h"
        header.write_text("/// \\param other nothing.\nvoid f(int one);\n", encoding="utf-8")
        settings = self.folder / "Doxyfile"
        settings.write_text(f"@INCLUDE = {os.environ['DOXYFILE']}\nINPUT = {header}\n", encoding="utf-8")

        self.assertNotEqual(self.make(str(settings)).returncode, 0)


if __name__ == "__main__":
    unittest.main()
