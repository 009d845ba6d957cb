"""The scheduler in real time."""
import datetime
import os
import subprocess
import unittest

from support import HomeTest, PROGRAM, hh_mm, lines_of, next_minute, sleep_until


class Scheduler(HomeTest):
    def test_each_due_task_fires_once_at_its_minute(self):
        due = next_minute(margin=15)
        after = due + datetime.timedelta(minutes=1)
        marks = {}
        schedulers = []
        for name in ("one", "two"):
            home = self.home(name)
            for task, minute in (("now", due), ("later", after), ("yesterday", due)):
                program, marks[name, task] = self.marker(home, task)
                when = ["--every", "Every Day"]
                if task == "yesterday":
                    day = due - datetime.timedelta(days=1)
                    # Dates are in the order of the C locale here.
                    when = ["--once", day.strftime("%m/%d/%Y")]
                self.orvanto(home, "add", task, "--at", hh_mm(minute), *when,
                             "--program", program, env={**os.environ, "LC_ALL": "C"})
            self.orvanto(home, "set", "General", "ProxyPort", "a port")
            schedulers.append(self.start(home))
        # Into the store of a scheduler that is running.
        program, marks["two", "added"] = self.marker(self.home("two"), "added")
        self.orvanto(self.home("two"), "add", "added", "--at", hh_mm(due), "--day", str(due.day),
                     "--program", program)

        sleep_until(after + datetime.timedelta(seconds=3))
        expected = {"now": due, "later": after, "added": due, "yesterday": None}
        for (name, task), path in marks.items():
            fired = lines_of(path)
            minute = expected[task]
            if minute is None:
                self.assertEqual(fired, [], (name, task))
                continue
            self.assertEqual(len(fired), 1, (name, task, fired))
            self.assertRegex(fired[0], "^" + hh_mm(minute) + ":0[0-2]$", (name, task))
        output = [self.stop(process) for process in schedulers]
        for name, text in zip(("one", "two"), output):
            self.assertIn("now (Run Program/Shortcut)", text)
            log = (self.home(name) / "ORVTASK.LOG").read_bytes()
            self.assertEqual(log, b'"Error Code:13"\r\n')
            self.assertEqual(self.orvanto(self.home(name), "get", "General", "OnTop"), "0\n")

    def test_a_second_scheduler_in_the_same_home_is_refused(self):
        home = self.home()
        first = self.start(home)
        done = subprocess.run([PROGRAM, "--home", home], capture_output=True, text=True,
                              timeout=20, stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("already", done.stderr)
        self.stop(first)
        self.stop(self.start(home))

    def test_commands_tell_their_outcome(self):
        home = self.home()
        self.orvanto(home, "add", "hello", "--at", "10:00", "--day", "1", "--message", "Hello")
        self.assertEqual(self.orvanto(home, "run", "1"), "Orvanto: Hello\n")
        self.orvanto(home, "frobnicate", status=2)
        self.orvanto(home, "add", "bad", "--at", "25:00", "--day", "1", "--reset", status=1)
        self.assertEqual(self.last_error, "Invlaid Hour given for Time\n")

    def test_a_script_says_what_it_shows_and_what_it_cannot_do(self):
        home = self.home()
        scripts = home / "scripts"
        folder = str(home).replace("/", "\\")
        (scripts / "text.txt").parent.mkdir()
        (scripts / "text.txt").write_text("")
        text = f"z:{folder}\\scripts\\text.txt"
        lines = ["msgbox('Hello\x1b[2J',nostop)", "setfocus('x')", "setfocus('y')",
                 "sendkeys('x',a)", "beep()", "dialout('x')", f"open('{text}')",
                 f"print('{text}')", "hangup()", "beep()",
                 f"move('z:{folder}\\scripts\\once.txt',z:{folder})", "delay(1)"]
        (scripts / "once.txt").write_text("\n".join(lines))
        self.orvanto(home, "add", "once", "--at", "10:00", "--day", "1", "--script", "once.txt")
        # It begins again behind its delay and is no longer there.
        said = self.orvanto(home, "run", "1", status=1, env={**os.environ, "PATH": str(home)})
        self.assertEqual(said, "Orvanto: Hello?[2J\n")
        self.assertEqual(self.last_error.splitlines(), [
            "orvanto: setfocus: there are no windows here",
            "orvanto: sendkeys: there are no windows here",
            "orvanto: beep: there is no terminal to beep on",
            "orvanto: dialout: there is no such program here",
            "orvanto: open: documents are not opened: xdg-open is not on PATH",
            "orvanto: print: nothing is printed: neither lp nor lpr is on PATH",
            "orvanto: hangup: there is no dial-up connection to end",
            "once.txt: File not found"])


if __name__ == "__main__":
    unittest.main()
