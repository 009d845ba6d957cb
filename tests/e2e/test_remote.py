"""The remote control with real clients: telnet and PuTTY's plink."""
import os
import pathlib
import pty
import select
import signal
import socket
import termios

from support import HomeTest, PATIENCE, PROGRAM, wait_until

MENU_END = b"7) Logout\r\n>"


class Terminal:
    """A program on a terminal of its own."""

    def __init__(self, test, *command, **environment):
        test.addCleanup(self.close)
        self.seen = b""
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.environ.update(environment)
            os.execvp(command[0], command)

    def expect(self, text):
        """Reads until the text has come; returns all that came up to its end."""
        while text not in self.seen:
            if not select.select([self.fd], [], [], PATIENCE)[0]:
                raise AssertionError(f"{text} did not come: {self.seen!r}")
            self.seen += os.read(self.fd, 4096)
        end = self.seen.index(text) + len(text)
        came, self.seen = self.seen[:end], self.seen[end:]
        return came

    def line(self, text, then, echo=None):
        """Types a line and Enter, and waits for a text after it; returns all that came.

        Each key is waited for: keys that travel together are no line's end.
        """
        came = b""
        for key in text.encode():
            os.write(self.fd, bytes([key]))
            came += self.expect(echo or bytes([key]))
        os.write(self.fd, b"\r")
        return came + self.expect(then)

    def close(self):
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        os.close(self.fd)


class Remote(HomeTest):
    def serve(self, **settings):
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        home = self.home()
        self.set(home, Inet_ServerOn="1", Inet_ServerPort=str(self.port), **settings)
        return home

    def wait_until_listening(self):
        """Without a connection of its own, after which the next one would be refused."""
        listens = f":{self.port:04X} 00000000:0000 0A"
        wait_until(lambda: listens in pathlib.Path("/proc/net/tcp").read_text(encoding="ascii"),
                   "the server does not listen")

    def real_client(self, *command, compat="0"):
        """What a client's keys and its protocol could spoil."""
        home = self.serve(Inet_Passwd_Required="1", Inet_Passwd="Secret", Inet_Compat=compat)
        (home / "scripts" / "night.txt").write_text("*(nothing)\n")
        self.start(home)
        self.wait_until_listening()
        terminal = Terminal(self, *command, str(self.port), TERM="dumb")
        terminal.expect(b"Enter Password: ")
        wait_until(lambda: not termios.tcgetattr(terminal.fd)[3] & termios.ECHO, "it still echoes")
        came = terminal.line("Secret", MENU_END, echo=b"*")
        self.assertIn(b"******", came)
        self.assertNotIn(b"Secret", came)
        self.assertNotIn(b"\xff", came)
        self.assertIn(b"night.txt", terminal.line("5", b"Press 'q' for Main Menu"))
        terminal.line("q", MENU_END)
        terminal.line("7", b"")

    def test_telnet_of_today(self):
        self.real_client("telnet", "127.0.0.1", compat="1")

    def test_plink(self):
        self.real_client("plink", "-telnet", "127.0.0.1", "-P")

    def test_chat_with_the_terminal_of_the_console_host(self):
        host = Terminal(self, PROGRAM, "--home", str(self.serve(Inet_Compat="1")))
        host.expect(b"runs the tasks in")
        self.wait_until_listening()
        with socket.create_connection(("127.0.0.1", self.port), PATIENCE) as client:
            seen = client.makefile("rb")
            client.sendall(b"6\n")
            host.expect(b"Accept Chat Request?")
            os.write(host.fd, b"y\n")
            host.expect(b"A chat with the remote client has begun")
            client.sendall(b"hi\n")
            host.expect(b"Client: hi")
            os.write(host.fd, b"hello there\n/\n")
            self.assertIn(b"Server: hello there\r\n", seen)
            self.assertIn(b"Chat Ended by Server\r\n", seen)
