"""Stock servers of files on loopback: `with serve("vsftpd", folder) as server: ...`

To be run by own-network; `tools/setup peers` unpacks the servers. They want root, and more users
than there are: wrapper libraries pretend both, and give them a list of users of their own.
"""
import contextlib
import os
import pathlib
import signal
import socket
import subprocess
import tempfile
import types

from support import wait_until

HOST = "127.0.0.1"
PEERS = pathlib.Path(__file__).resolve().parents[2] / "build/peers"
LIBRARIES = {"LD_LIBRARY_PATH": ":".join(str(path) for path in PEERS.rglob("*-linux-gnu*"))}
# vsftpd wants a folder that not even root can write to: /proc/sys.
FILES = {
    "passwd": "root:x:0:0::/:/bin/sh\nnobody:x:65534:65534::/:/bin/false\n"
              "anna:$1$orvanto$VVO5VtLRJnifl3CeiXTjM.:1000:1000::{folder}:/bin/sh\n"
             "ftp:x:1001:1000::{folder}:/bin/false\n",
    "group": "root:x:0:\nnogroup:x:65534:\nusers:x:1000:\n",
    "vsftpd": """listen=YES
listen_port={port}
local_enable=YES
pam_service_name=other
chroot_local_user=YES
allow_writeable_chroot=YES
secure_chroot_dir=/proc/sys
write_enable=YES
seccomp_sandbox=NO
""",
    "nginx": """daemon off;
master_process off;
user root users;
pid {home}/pid;
error_log stderr crit;
events {{}}
http {{
  access_log off;
  client_body_temp_path {home};
  fastcgi_temp_path {home};
  proxy_temp_path {home};
  scgi_temp_path {home};
  uwsgi_temp_path {home};
  sendfile on;
  server {{
    listen 127.0.0.1:{port};
    root {folder};
    location /slow/ {{ alias {folder}/; limit_rate 40m; }}
    location /moved/ {{ rewrite ^/moved/(.*) /slow/$1 redirect; }}
  }}
}}
"""}
COMMANDS = {"vsftpd": "{home}/vsftpd",
            "pure-ftpd": "-A -t 20000 -H -S 127.0.0.1,{port} -f none -g {home}/pid -l unix",
            "nginx": "-c {home}/nginx -e stderr"}


def greets(port, greeting):
    try:
        with socket.create_connection((HOST, port), 10) as connection:
            return connection.recv(len(greeting)) == greeting
    except ConnectionRefusedError:
        return False


@contextlib.contextmanager
def serve(name, folder, port=0):
    """Serves a folder until the block ends; at any free port, if none is told.

    By FTP one user may do everything, in both modes; pure-ftpd lets the anonymous read, at 20 MB a
    second. nginx serves the folder once more as /slow, at 40 MiB a second, the first at once;
    /moved leads there.
    """
    with socket.create_server((HOST, port)) as free:
        port = free.getsockname()[1]
    with tempfile.TemporaryDirectory() as home:
        words = {"folder": folder, "home": home, "port": port}
        for file, text in FILES.items():
            pathlib.Path(home, file).write_text(text.format(**words))
        process = subprocess.Popen(
            [PEERS / "usr/sbin" / name, *COMMANDS[name].format(**words).split()],
            env={**os.environ, **LIBRARIES, "LD_PRELOAD": "libuid_wrapper.so libnss_wrapper.so",
                 "UID_WRAPPER": "1", "UID_WRAPPER_ROOT": "1",
                 "NSS_WRAPPER_PASSWD": f"{home}/passwd", "NSS_WRAPPER_GROUP": f"{home}/group"},
            stdin=subprocess.DEVNULL, start_new_session=True)
        try:
            greeting = b"" if name == "nginx" else b"220"
            wait_until(lambda: greets(port, greeting), "the server does not listen")
            yield types.SimpleNamespace(port=port, user="anna", password="secret")
        finally:
            os.killpg(process.pid, signal.SIGKILL)  # Its sessions are of its group.
            process.wait()
