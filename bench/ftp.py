#!/usr/bin/env python3
"""The FTP server beside pure-ftpd, vsftpd, pyftpdlib and the plain read-and-send loop.

Wants root, for a network of its own: thousands of transfers would use up this machine's ports. The
client is the same for all, in active mode; what it gets is compared. Medians of interleaved runs.
Usage: bench/ftp.py FOLDER-OF-PROGRAMS [MiB]
"""
import os
import pathlib
import pwd
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "tests/e2e"))
import stock_servers  # pylint: disable=wrong-import-position

ROUNDS = 5
FILES = 500
HOST = "127.0.0.1"
PYFTPD = """
import sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer
FTPHandler.authorizer = DummyAuthorizer()
FTPHandler.authorizer.add_anonymous(sys.argv[1])
FTPHandler.permit_foreign_addresses = FTPHandler.permit_privileged_ports = True
server = FTPServer(("127.0.0.1", int(sys.argv[2])), FTPHandler)
server.max_cons = server.max_cons_per_ip = 1000
server.serve_forever()
"""
VSFTPD = """listen=YES
listen_port={port}
background=NO
anonymous_enable=YES
no_anon_password=YES
anon_root={folder}
secure_chroot_dir={empty}
connect_from_port_20=NO
anon_world_readable_only=NO
seccomp_sandbox=NO
max_per_ip=500
max_clients=500
"""


class Client:
    """Speaks just enough FTP; a reply is read line by line."""

    def __init__(self, port):
        self.control = socket.create_connection((HOST, port))
        self.control.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.lines = self.control.makefile("rb")
        self.reply("220")
        self.listener = socket.create_server((HOST, 0))
        first, last = divmod(self.listener.getsockname()[1], 256)
        self.here = f"PORT 127,0,0,1,{first},{last}"

    def reply(self, *codes):
        while True:
            line = self.lines.readline().decode()
            if line[3:4] != "-":
                assert line[:3] in codes, line
                return

    def do(self, command, *codes):
        self.control.sendall(command.encode() + b"\r\n")
        self.reply(*codes)

    def login(self):
        self.do("USER anonymous", "331", "230")
        self.do("PASS a@b", "230")
        self.do("TYPE I", "200")
        return self

    def fetch(self, command, buffer):
        self.do(self.here, "200")
        self.control.sendall(command.encode() + b"\r\n")
        self.reply("150", "125")
        data, _ = self.listener.accept()
        size = 0
        with data:
            while count := data.recv_into(buffer):
                size += count
        self.reply("226")
        return size

    def close(self):
        self.lines.close()
        self.control.close()
        self.listener.close()


def milliseconds(work):
    begin = time.perf_counter()
    work()
    return (time.perf_counter() - begin) * 1000


def logins(port, count):
    clients = []

    def some():
        for _ in range(count // 16):
            clients.append(Client(port).login())

    threads = [threading.Thread(target=some) for _ in range(16)]
    took = milliseconds(lambda: [[t.start() for t in threads], [t.join() for t in threads]])
    return clients, took * count / len(clients)


def memory(pid):
    """PSS in MiB of a process and those that it has started."""
    total = 0
    for each in [pid, *subprocess.run(["pgrep", "-P", str(pid)], capture_output=True, text=True,
                                      check=False).stdout.split()]:
        for line in pathlib.Path(f"/proc/{each}/smaps_rollup").read_text().splitlines():
            if line.startswith("Pss:"):
                total += int(line.split()[1])
    return total / 1024


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    size = int(sys.argv[2] if len(sys.argv) > 2 else 1024) << 20
    if "OWN_NETWORK" not in os.environ:
        os.execvpe("unshare", ["unshare", "-nm", sys.executable, *sys.argv],
                   {**os.environ, "OWN_NETWORK": "1"})
    subprocess.run("ip link set lo up; sysctl -qw net.ipv4.ip_local_port_range='20000 32000' "
                   "net.ipv4.tcp_max_tw_buckets=200", shell=True, check=True)
    with tempfile.TemporaryDirectory(dir="/dev/shm") as scratch:
        home = pathlib.Path(scratch)
        folder, empty = home / "scripts", home / "empty"
        for each in (folder, empty):
            each.mkdir()
        home.chmod(0o755)
        with open(folder / "big", "wb") as big:
            for _ in range(size >> 20):
                big.write(os.urandom(1 << 10) * 1024)
        (folder / "small").write_bytes(b"x" * 1024)
        (home / "vsftpd.conf").write_text(VSFTPD.format(port=2101, folder=folder, empty=empty))
        orvanto = [programs / "orvanto", "--home", home]
        for name, value in (("Inet_ServerOn", "1"), ("Inet_ServerPort", "6000")):
            subprocess.run([*orvanto, "set", "General", name, value], check=True)
        # Where pure-ftpd lets the anonymous in.
        subprocess.run(["mount", "--bind", folder, pwd.getpwnam("ftp").pw_dir], check=True)
        pure = stock_servers.PEERS / "usr/sbin/pure-ftpd"
        commands = {
            "orvanto": (2100, [*orvanto, "--ftp-port", "2100"]),
            "vsftpd": (2101, ["vsftpd", home / "vsftpd.conf"]),
            "pure-ftpd": (2102, [pure, "-S", f"{HOST},2102", "-e", "-H", "-c", "500", "-C",
                                 "500", "-I", "60", "-U", "133:022"]),
            "pyftpdlib": (2103, ["/usr/bin/python3", "-c", PYFTPD, folder, "2103"])}
        servers = {name: subprocess.Popen(command, env={**os.environ, **stock_servers.LIBRARIES},
                                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                          stderr=subprocess.DEVNULL)
                   for name, (_, command) in commands.items()}
        results = {}

        def note(what, name, value):
            results.setdefault(what, {}).setdefault(name, []).append(value)

        buffer = bytearray(256 << 10)
        try:
            time.sleep(2)
            for _ in range(ROUNDS):
                with socket.create_server((HOST, 0)) as sink:
                    plain = subprocess.Popen(
                        [programs / "transfer_bench", "send-plain", str(sink.getsockname()[1]),
                         folder / "big"], stdout=subprocess.DEVNULL)
                    data, _ = sink.accept()
                    got = 0
                    begin = time.perf_counter()
                    while count := data.recv_into(buffer):
                        got += count
                    note("1 GiB, ms", "plain loop", (time.perf_counter() - begin) * 1000)
                    plain.wait()
                    assert got == size
                for name, (port, _) in commands.items():
                    client = Client(port).login()

                    def fetch_big():
                        assert client.fetch("RETR big", buffer) == size

                    note("1 GiB, ms", name, milliseconds(fetch_big))
                    note("files of 1 KiB, files/s", name, FILES * 1000 / milliseconds(
                        lambda: [client.fetch("RETR small", buffer) for _ in range(FILES)]))
                    client.close()
                    clients, took = logins(port, 100)
                    note("100 logins, ms", name, took)
                    note("memory with them, MiB", name, memory(servers[name].pid))
                    for each in clients:
                        each.close()
                    time.sleep(0.3)
            for i in range(10_000):
                (folder / f"file{i:05}").touch()
            for _ in range(ROUNDS):
                for name, (port, _) in commands.items():
                    client = Client(port).login()
                    note("LIST of 10,000, ms", name, milliseconds(
                        lambda: client.fetch("LIST", buffer)))
                    client.close()
        finally:
            for server in servers.values():
                server.terminate()
                server.wait()
        for what, names in results.items():
            print(what + ": " + ", ".join(f"{name} {statistics.median(values):,.1f}"
                                          for name, values in names.items()))


main()
