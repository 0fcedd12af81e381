"""Command lines that a person types into an interactive bash, with the tab key."""
import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time

tool, types = sys.argv[1:3]
root = tempfile.mkdtemp()
environment = dict(os.environ, TARN_HOST_ROOT=root, TERM="dumb", PS1="", INPUTRC="/dev/null",
                   PATH=os.path.dirname(tool) + ":" + os.environ["PATH"])


def tarnctl(*arguments):
    subprocess.run([tool, *arguments], env=environment, check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


tarnctl("init")
tarnctl("schema", "install", types)
for name in ("edge", "edge two"):
    tarnctl("set", "tarn/network/switches/" + name, "mtu=9000")

shell, terminal = pty.fork()
if shell == 0:
    os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"], environment)


def read_until(pattern):
    """What the terminal showed, up to a match or ten seconds."""
    shown, end = "", time.monotonic() + 10
    while not re.search(pattern, shown) and time.monotonic() < end:
        if select.select([terminal], [], [], 0.1)[0]:
            shown += os.read(terminal, 4096).decode()
    return shown


def ask(line):
    """The words of the line as bash would run it, after its last word was completed."""
    os.write(terminal, ("words " + line + "\t\n").encode())
    return re.findall(r"<(.*?)>", read_until(r"<>\r?\n"))[:-1]


# "words" stands for the tool: it tells what it would have been called with, and completes alike.
os.write(terminal, b"words() { printf '<%s>' \"$@\" ''; echo; }; tarnctl completion bash >f\n"
         .replace(b">f", b">" + root.encode() + b"/f"))
os.write(terminal, b". %s/f; words() { [ \"$1\" = candidates ] && tarnctl \"$@\" || printf '<%%s>' \"$@\" ''; echo; };"
         b" complete -o default -F _tarnctl words; echo be''gin\n" % root.encode())
read_until(r"begin\r?\n")

failures = 0
for line, wanted in [
        ("expo", ["export"]),
        ("next-boot li", ["next-boot", "list"]),
        ("apply --ch", ["apply", "--check"]),
        ("get tarn/network/res", ["get", "tarn/network/resolver"]),
        ("--root=/nowhere get tarn/network/res", ["--root=/nowhere", "get", "tarn/network/res"]),
        (r"get tarn/network/switches/edge\ t", ["get", "tarn/network/switches/edge two"]),
        ("get tarn/network/resolver lease.s", ["get", "tarn/network/resolver", "lease.server"]),
        ("set tarn/network/firewallRules/web dir",
         ["set", "tarn/network/firewallRules/web", "direction="]),
        ("set tarn/network/firewallRules/web direction=inb",
         ["set", "tarn/network/firewallRules/web", "direction=inbound"]),
        ("kv get NOTI", ["kv", "get", "NOTIFY_KEELD"]),
        ("import " + root + "/et", ["import", root + "/etc/"])]:
    found = ask(line)
    if found != wanted:
        print(f"{line!r} became {found}, not {wanted}")
        failures += 1
os.write(terminal, b"exit\n")
os.waitpid(shell, 0)
subprocess.run(["rm", "-rf", root], check=True)
sys.exit(1 if failures else 0)
