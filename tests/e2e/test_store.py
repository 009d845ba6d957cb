"""The registry file under kills, crowds and damage."""
import random
import subprocess
import time
import unittest

from support import HomeTest, PROGRAM

CHANGES = 500


class Store(HomeTest):
    def listing(self, home):
        return self.orvanto(home, "list").splitlines()

    def add_words(self, name):
        return ["add", name, "--at", "10:00", "--every", "Every Day", "--message", "Text of " + name,
                "--group", "G"]

    def test_killed_at_any_moment_the_store_is_the_old_or_the_new_one(self):
        home = self.home()
        rand = random.Random(500)
        self.orvanto(home, *self.add_words("first"))
        # Most kills should come near the moment of the change, wherever this machine has it.
        delay = 0.02
        old = self.listing(home)
        outcomes = {"old": 0, "new": 0}
        for number in range(CHANGES):
            names = [line.split(") ", 1)[1].split(" | ")[0] for line in old]
            if names and (len(names) >= 12 or rand.random() < 0.5):
                slot = rand.randrange(len(names))
                words = ["delete", str(slot + 1)]
                after = names[:slot] + names[slot + 1:]
            else:
                words = self.add_words(f"task {number}")
                after = names + [f"task {number}"]
            new = [f"{i}) {name} | Popup Message | 10:00 on Every Day In Every Month"
                   for i, name in enumerate(after, 1)]
            process = subprocess.Popen([PROGRAM, "--home", home, *words],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(rand.uniform(0, 2) * delay)
            process.kill()
            process.wait()
            now = self.listing(home)
            self.assertEqual(self.last_error, "")
            self.assertIn(now, (old, new), f"change {number}: {words}")
            outcomes["old" if now == old else "new"] += 1
            delay *= 1.1 if now == old else 0.9
            old = now
        # Otherwise the kills came all too early or all too late to mean anything.
        self.assertGreater(outcomes["old"], CHANGES // 20, outcomes)
        self.assertGreater(outcomes["new"], CHANGES // 20, outcomes)
        leftovers = sorted(path.name for path in home.iterdir())
        self.assertLessEqual(len(leftovers), 5, leftovers)

    def test_two_at_once_lose_nothing(self):
        home = self.home()
        processes = [
            subprocess.Popen([PROGRAM, "--home", home, *self.add_words(f"task {i}")],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            for i in range(20)]
        for process in processes:
            _, error = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 0, error)
        lines = self.listing(home)
        self.assertEqual(len(lines), 20)
        names = {line.split(") ", 1)[1].split(" | ")[0] for line in lines}
        self.assertEqual(names, {f"task {i}" for i in range(20)})

    def test_a_damaged_file_is_set_aside_and_said_so(self):
        home = self.home()
        self.orvanto(home, *self.add_words("first"))
        registry = home / "registry.txt"
        damaged = registry.read_text().replace('"Group"="G"', '"Group"=G')
        registry.write_text(damaged)
        # A command leaves it alone and writes nothing; the scheduler sets it aside.
        self.assertEqual(self.listing(home), [])
        self.assertIn("damaged", self.last_error)
        self.orvanto(home, *self.add_words("second"), status=1)
        self.assertEqual(registry.read_text(), damaged)
        process = self.start(home, first="damaged")
        self.assertIn("runs the tasks in", process.stdout.readline())
        self.stop(process)
        aside = [path for path in home.iterdir() if "damaged" in path.name]
        self.assertEqual([path.read_text() for path in aside], [damaged])


if __name__ == "__main__":
    unittest.main()
