"""The scheduler in real time."""
import os
from datetime import timedelta

from support import HomeTest, hh_mm, lines_of, next_minute, sleep_until


class Scheduler(HomeTest):
    def test_each_due_task_fires_once_at_its_minute_by_the_one_scheduler(self):
        due = next_minute(margin=15)
        after = due + timedelta(minutes=1)
        marks = {}

        def add(name, task, minute, *when):
            program, marks[name, task] = self.marker(self.home(name), task)
            # Dates are in the order of the C locale.
            self.orvanto(self.home(name), "add", task, "--at", hh_mm(minute), *when, "--program",
                         program, env={**os.environ, "LC_ALL": "C"})

        schedulers = {}
        for name in ("one", "two"):
            add(name, "now", due, "--every", "Every Day")
            add(name, "later", after, "--every", "Every Day")
            add(name, "yesterday", due, "--once", (due - timedelta(days=1)).strftime("%m/%d/%Y"))
            self.orvanto(self.home(name), "set", "General", "ProxyPort", "a port")
            schedulers[name] = self.start(self.home(name))
        add("two", "added", due, "--day", str(due.day))  # where a scheduler is running
        self.orvanto(self.home("two"), status=1)
        self.assertIn("already", self.last_error)

        sleep_until(after + timedelta(seconds=3))
        expected = {"now": [hh_mm(due)], "later": [hh_mm(after)], "added": [hh_mm(due)],
                    "yesterday": []}
        for (name, task), path in marks.items():
            # Within ten seconds.
            self.assertEqual(lines_of(path, 7), [m + ":0" for m in expected[task]], (name, task))
        for name, process in schedulers.items():
            self.assertIn("now (Run Program/Shortcut)", self.stop(process))
            log = (self.home(name) / "ORVTASK.LOG").read_bytes()
            self.assertEqual(log, b'"Error Code:13"\r\n')
            self.assertEqual(self.orvanto(self.home(name), "get", "General", "OnTop"), "0\n")
            self.stop(self.start(self.home(name)))
