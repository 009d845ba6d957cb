#!/usr/bin/env python3
"""CPU time and memory of the idle scheduler with 100 tasks, beside cron with 100 entries and a program
that only wakes once a second.

All run at the same time for whole minutes, after one minute to settle; nothing is due. CPU time is
the kernel's count of nanoseconds on a processor. cron gets its entries in a mount namespace of its
own, so that the system's are not touched (needs root).
Usage: bench/idle.py PROGRAM [MINUTES]
"""
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

TASKS = 100


def cpu_ns(pid):
    return int(pathlib.Path(f"/proc/{pid}/schedstat").read_text().split()[0])


def wakeups(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(status.split("voluntary_ctxt_switches:")[1].split()[0])


def resident_kib(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(status.split("VmRSS:")[1].split()[0])


def start_orvanto(program, folder):
    home = folder / "home"
    for number in range(TASKS):
        subprocess.run([program, "--home", home, "add", f"Task {number}", "--at", "10:30",
                        "--every", "The 2nd Tuesday", "--program", "/bin/true"],
                       check=True, capture_output=True)
    return subprocess.Popen([program, "--home", home], stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL)


def start_cron(folder):
    entries = folder / "cron.d"
    entries.mkdir()
    # The 30th of February.
    (entries / "entries").write_text("".join(
        f"{n % 60} 10 30 2 * root /bin/true\n" for n in range(TASKS)))
    (folder / "empty").mkdir()
    script = (f"mount --bind {entries} /etc/cron.d && mount --bind {folder}/empty "
              f"/var/spool/cron/crontabs && mount --bind {folder}/empty /run && exec cron -f")
    return subprocess.Popen(["unshare", "-m", "sh", "-c", script])


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    minutes = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        processes = {"orvanto": start_orvanto(program, folder), "cron": start_cron(folder),
                     "empty": subprocess.Popen([program.parent / "empty_second"])}
        try:
            time.sleep(60)
            before = {who: (cpu_ns(p.pid), wakeups(p.pid)) for who, p in processes.items()}
            time.sleep(60 * minutes)
            print(f"{minutes} minutes, {TASKS} tasks, none due")
            for who, process in processes.items():
                if process.poll() is not None:
                    sys.exit(f"{who} has ended")
                cpu = (cpu_ns(process.pid) - before[who][0]) / minutes / 1e6
                woken = (wakeups(process.pid) - before[who][1]) / minutes
                print(f"{who:8} {cpu:6.2f} ms CPU a minute, {woken:5.1f} wake-ups a minute, "
                      f"{resident_kib(process.pid) / 1024:5.1f} MiB resident")
        finally:
            for process in processes.values():
                if process.poll() is None:
                    process.send_signal(signal.SIGTERM)
                process.wait()


main()
