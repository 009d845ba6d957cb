"""The packages of build/packages, installed, used, updated and removed."""
import os
import pathlib
import re
import shutil
import subprocess
import zipfile
from unittest import mock

from support import HomeTest, wait_until

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
SAMPLES = {path.name for path in (TOP / "scripts").iterdir()}


def package(pattern):
    return next((TOP / "build/packages").glob(pattern))


def run(*words, **options):
    done = subprocess.run(words, capture_output=True, text=True, timeout=100, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words}: {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout + done.stderr


def call_quietly(*words):
    return subprocess.call(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Windows(HomeTest):
    RUN = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Run"
    UNINSTALL = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Orvanto"
    TASKS = r"HKCU\Software\Quellmark\Orvanto\General"

    def setUp(self):
        super().setUp()
        prefix = str(self.home("wine"))
        self.enterContext(mock.patch.dict(os.environ, WINEPREFIX=prefix, WINEDEBUG="-all"))
        run(TOP / "tools/wine-prefix", prefix)
        # Not kept waiting for by whoever reads a program's output: see tools/on-screen.
        call_quietly("wine", "rundll32", "user32.dll,GetDesktopWindow")
        self.addCleanup(call_quietly, "wineserver", "-w")
        self.addCleanup(call_quietly, "wineserver", "-k")
        users = self.scratch / "wine/drive_c/users"
        self.user = next(path for path in users.iterdir() if path.name != "Public") / "AppData"
        self.folder = self.user / "Local/Programs/Orvanto"

    def value(self, key, name):
        """A text of the registry, "" where there is none."""
        said = subprocess.run(["wine", "reg", "query", key, "/v", name], timeout=60,
                              capture_output=True, text=True, check=False).stdout
        return said.split("REG_SZ")[1].strip() if "REG_SZ" in said else ""

    def files(self):
        return {path.name for path in self.folder.rglob("*") if path.is_file()}

    def traces(self):
        """Outside the folder: the link, the name in the list of programs, the start with Windows."""
        link = self.user / "Roaming/Microsoft/Windows/Start Menu/Programs/Orvanto.lnk"
        name = self.value(self.UNINSTALL, "DisplayName")
        return link.exists(), name, self.value(self.RUN, "Orvanto")

    def test_installed_updated_while_it_runs_and_removed(self):
        setup = ["wine", package("*-setup.exe"), "/S"]
        run(*setup)
        self.assertLessEqual({"orvanto.exe", "index.html", "LICENSE.txt", "README.txt", *SAMPLES},
                             self.files())
        with zipfile.ZipFile(package("*-win64.zip")) as portable:
            self.assertEqual({pathlib.Path(name).name for name in portable.namelist()
                              if not name.endswith("/")}, self.files() - {"uninstall.exe"})
        self.assertEqual(self.traces(), (True, "Orvanto", ""))

        scripts = self.folder / "scripts"
        (scripts / "mine.txt").write_text("beep()")
        (scripts / "note.txt").write_text("beep()")
        (scripts / "question.txt").unlink()
        sample = scripts / "backup.txt"
        installed = sample.stat()
        sample.write_text("an older version's")
        os.utime(sample, ns=(installed.st_atime_ns, installed.st_mtime_ns))
        for key, name, text in ((self.RUN, "Orvanto", "elsewhere"), (self.TASKS, "NoTasks", "7")):
            run("wine", "reg", "add", key, "/v", name, "/d", text)
        shown = ["xdotool", "search", "--onlyvisible", "--name", "^Orvanto - "]
        program = self.begin("wine", self.folder / "orvanto.exe", output=subprocess.DEVNULL)
        wait_until(lambda: call_quietly(*shown) == 0, "not started")
        # Unread: the program that it starts keeps the output.
        self.assertEqual(call_quietly(*setup), 0)
        self.assertEqual(program.wait(1), 0)
        wait_until(lambda: call_quietly(*shown) == 0, "not restarted")
        self.assertEqual(self.value(self.RUN, "Orvanto"),
                         r'"C:\users\%s\AppData\Local\Programs\Orvanto\orvanto.exe" invisible'
                         % self.user.parent.name)
        self.assertEqual(sample.read_text(), (TOP / "scripts/backup.txt").read_text())
        self.assertEqual(set(os.listdir(scripts)), (SAMPLES | {"mine.txt"}) - {"question.txt"})

        self.assertEqual(call_quietly("wine", self.folder / "uninstall.exe", "/S"), 0)
        wait_until(lambda: not (self.folder / "uninstall.exe").exists(), "not removed")
        self.assertEqual(self.files() - {"ORVTASK.LOG"}, {"mine.txt", "note.txt"})
        self.assertEqual((scripts / "note.txt").read_text(), "beep()")
        self.assertEqual(self.traces(), (False, "", ""))
        self.assertEqual(self.value(self.TASKS, "NoTasks"), "7")


class Debian(HomeTest):
    def test_installed_used_and_removed(self):
        root, home = self.home("root"), self.home()
        (root / "var/lib/dpkg/updates").mkdir(parents=True)
        (root / "var/lib/dpkg/status").touch()
        dpkg = ["dpkg", f"--root={root}", "--force-not-root", "--force-depends", "--force-bad-path"]
        if os.geteuid() != 0:
            dpkg[:0] = ["unshare", "-r"]
        run(*dpkg, "-i", package("*.deb"))
        program = root / "usr/bin/orvanto"
        usage = run(program, "--help")
        self.assertEqual(run(program, "--home", home, "list"), "")
        self.assertEqual(set(os.listdir(home / "scripts")), SAMPLES)
        (home / "scripts/note.txt").unlink()
        run(program, "--home", home, "add", "Tea", "--at", "16:00", "--day", "1", "--message", "T")
        self.assertEqual(set(os.listdir(home / "scripts")), SAMPLES - {"note.txt"})

        page = run("man", "--warnings", "-l", root / "usr/share/man/man1/orvanto.1.gz",
                   env={**os.environ, "MANWIDTH": "100", "LC_ALL": "C.UTF-8"})
        self.assertNotIn("warning", page)
        commands = re.findall(r"^  ([a-z]+)", usage, re.M)
        for word in commands + re.findall(r"--[a-z-]+", usage):
            self.assertRegex(page, rf"(?<!\S)\[?{word}\b")
        complete = (f"source {root}/usr/share/bash-completion/completions/orvanto;"
                    f"COMP_WORDS=({program} de); COMP_CWORD=1; _orvanto; echo ${{COMPREPLY[@]}}")
        self.assertEqual(run("bash", "-c", complete), "delete\n")
        if shutil.which("systemd-analyze"):
            unit = root / "usr/lib/systemd/user/orvanto.service"
            unit.write_text(unit.read_text().replace("/usr/bin/orvanto", str(program)))
            self.assertEqual(run("systemd-analyze", "--user", "--man=no", "verify", unit,
                                 env={**os.environ, "XDG_RUNTIME_DIR": str(self.scratch)}), "")

        run(*dpkg, "-r", "orvanto")
        self.assertEqual([str(path) for path in root.glob("usr/**/*") if path.is_file()], [])
