"""The registry file under kills and damage."""
import random
import subprocess
import time

from support import HomeTest, PROGRAM

CHANGES = 500
TASK = "--at 10:00 --day 1 --message Text".split()


def listing(names):
    return "".join(f"{number}) {name} | Popup Message | 10:00 on Day Number: 1\n"
                   for number, name in enumerate(names, 1))


class Store(HomeTest):
    def test_killed_at_any_moment_the_store_is_the_old_or_the_new_one(self):
        home = self.home()
        # Most kills should come near the moment of the change, wherever this machine has it.
        delay = 0.02
        old = []
        outcomes = [0, 0]
        for number in range(CHANGES):
            if len(old) == 12 or (old and random.random() < 0.5):
                slot = random.randrange(len(old))
                words, new = ["delete", str(slot + 1)], old[:slot] + old[slot + 1:]
            else:
                words, new = ["add", f"task {number}", *TASK], [*old, f"task {number}"]
            process = subprocess.Popen([PROGRAM, "--home", home, *words],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            time.sleep(random.uniform(0, 2) * delay)
            process.kill()
            process.communicate()
            listed = self.orvanto(home, "list")
            self.assertEqual(self.last_error, "")
            self.assertIn(listed, (listing(old), listing(new)), f"change {number}: {words}")
            changed = listed == listing(new)
            outcomes[changed] += 1
            delay *= 0.9 if changed else 1.1
            old = new if changed else old
        # Otherwise the kills came all too early or all too late to mean anything.
        self.assertGreater(min(outcomes), CHANGES // 20, outcomes)
        self.assertLessEqual(len(list(home.iterdir())), 5)

    def test_a_damaged_file_is_set_aside_by_the_one_scheduler_and_said_so(self):
        home = self.home()
        (home / "registry.txt").write_text("damage")
        self.orvanto(home, "set", "General", "OnTop", "1", status=1)
        self.assertIn("damaged", self.last_error)
        process = self.start(home, first="damaged")
        self.orvanto(home, status=1)
        self.assertIn("already", self.last_error)
        self.stop(process)
        self.assertEqual((home / "registry.txt.damaged-1").read_text(), "damage")
