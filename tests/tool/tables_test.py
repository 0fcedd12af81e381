"""Lists as a terminal shows them, and as everything else gets them: tables_test.py TARNCTL TYPES."""
import fcntl
import json
import os
import pty
import struct
import subprocess
import sys
import tempfile
import termios
import time

tool, types = sys.argv[1:3]
root = tempfile.mkdtemp()
here = os.path.dirname(os.path.abspath(__file__))
environment = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "COLUMNS")}
environment.update(TARN_HOST_ROOT=root, TERM="xterm")
failures = 0


def check(name, holds, found):
    global failures
    if not holds:
        print(f"{name}: {found!r}")
        failures += 1


def tarnctl(*arguments):
    return subprocess.run([tool, *arguments], env=environment, check=True, capture_output=True, text=True).stdout


def on_terminal(columns, *arguments, code=0, **variables):
    """The lines that a terminal of so many columns shows, standard error among them."""
    terminal, inside = pty.openpty()
    fcntl.ioctl(inside, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    with subprocess.Popen([tool, *arguments], env=dict(environment, **variables), stdin=subprocess.DEVNULL,
                          stdout=inside, stderr=inside) as process:
        os.close(inside)
        shown = b""
        try:
            while piece := os.read(terminal, 65536):
                shown += piece
        except OSError:  # how Linux tells that nobody has it open any more
            pass
    os.close(terminal)
    check(f"exit code of {arguments}", process.returncode == code, process.returncode)
    return shown.decode().splitlines()


tarnctl("init")
tarnctl("schema", "install", types, here + "/types/vault.json")
mounts, list_mounts = "tarn/storage/mounts", ("get", "tarn/storage/mounts", "--all-instances")
for label, share in (("ascii", "/plain"), ("wide", "/日本é"), ("wild", "/\x1b[31m\x9b\t\\\u202e"), ("long", "/" + 100 * "x")):
    tarnctl("set", f"{mounts}/{label}", 'hosts=["files"]', "share=" + share)

# Aligned by what characters take, cut with an ellipsis, nothing of a value but what it shows as.
lines = on_terminal(40, *list_mounts, NO_COLOR="1")
check("a table", lines == ["label  hosts      share",
                           "ascii  [\"files\"]  /plain",
                           "long   [\"files\"]  /" + 20 * "x" + "…",
                           "wide   [\"files\"]  /日本é",
                           "wild   [\"files\"]  /\\x1b[31m\\xc2\\x9b\\t\\\\…"], lines)
lines = on_terminal(40, *list_mounts, "--columns", "share,label", NO_COLOR="1")
check("columns after wide ones", lines[3] == "/日本é" + 97 * " " + "wide", lines[3])
check("COLUMNS", on_terminal(40, *list_mounts, COLUMNS="200")[2].endswith(100 * "x"), "cut")

# What is no terminal gets all of it: as ever, or lines that cut(1) takes apart.
check("JSON in a pipe", len(json.loads(tarnctl(*list_mounts))) == 4, "no array")
check("JSON on a terminal", json.loads("\n".join(on_terminal(40, "--json", *list_mounts))), "no array")
rows = tarnctl(*list_mounts, "--columns", "label,share,protocolVersion,credentials.user").splitlines()
check("tabs", rows[1] == "long\t/" + 100 * "x" + "\t4.1\t" and rows[3].split("\t")[1] == "/\\x1b[31m\\xc2\\x9b\\t\\\\\\u202e", rows)

# Colours, where they are seen and wanted.
for wanted, variables in ((True, {}), (True, {"NO_COLOR": ""}), (False, {"NO_COLOR": "1"}), (False, {"TERM": "dumb"})):
    shown = on_terminal(80, "schema", "list", **variables)
    check(f"colours with {variables}", ("\033[1mtype\033[0m" in shown[0]) == wanted, shown[0])

# Other lists.
for arguments, found in ((("list", mounts, "--columns", "values,object"), "user    tarn/storage/mounts/ascii"),
                         (("list", "--outdated"), "object  version  revision  modifiedTime  confirmed  values  installedVersion"),
                         (("kv", "list"), "NOTIFY_KEELD"),
                         (("next-boot", "list"), "object  action  version  values"),
                         (("get", "tarn/storage"), "tarn/storage/mounts/ascii  share   /plain")):
    lines = on_terminal(80, *arguments, NO_COLOR="1")
    check(str(arguments), found in lines, lines)
tarnctl("set", "tarn/network/resolver", "timeout=9", 'servers=["10.0.0.1"]')
differs = ("diff", "tarn/network/resolver", "--with", "defaults")
lines = on_terminal(80, *differs, code=5, NO_COLOR="1")
check("a table of differences", ["tarn/network/resolver", "~", "/timeout", "9", "5", "user"] in map(str.split, lines), lines)
check("where it does not fit, lines", "  ~ /timeout: 9 -> 5 (user)" in on_terminal(50, *differs, code=5, NO_COLOR="1"), "not found")
tarnctl("next-boot", "set", "tarn/tkernel/options", "maximumCpus=8")
lines = on_terminal(200, "pending", NO_COLOR="1")
check("a table of what waits", lines[0].startswith("object") and "boot apply replaces" in lines[1]
      and any("/maximumCpus" in line and line.split()[2] == "+" for line in lines), lines)

# One Ctrl-D ends what is typed, and only in the middle of a line it takes two.
for typed in (b'{"timeout":99}\n\4', b'{"timeout":99}\4\4'):
    process, terminal = pty.fork()
    if process == 0:
        os.execve(tool, [tool, "validate", "tarn/network/resolver", "-"], environment)
    os.write(terminal, typed)
    for _ in range(200):
        ended, status = os.waitpid(process, os.WNOHANG)
        if ended:
            break
        time.sleep(0.05)
    check(f"what ends {typed}", ended and os.waitstatus_to_exitcode(status) == 4, ended)
    os.close(terminal)

# Findings stand below each other, secrets are masked, and a column that there is not is named.
lines = on_terminal(80, "set", "tarn/network/resolver", "timeout=90", 'servers=["a"]', code=4, NO_COLOR="1")
check("findings", lines[1].index("60 is") == lines[2].index("expected"), lines)
tarnctl("set", "test/tool/vault", "password=hidden", 'token={"user":"hidden"}')
secrets = tarnctl("get", "test/tool", "--columns", "member,value")
check("secrets", secrets == "password\t***\ntoken\t***\n", secrets)
for columns in ("mtu", "share.x", "label,label", "label,", "credentials.usr"):
    said = on_terminal(200, *list_mounts, "--columns", columns, code=2)
    check(f"columns {columns}", len(said) == 1 and "column" in said[0], said)

subprocess.run(["rm", "-rf", root], check=True)
sys.exit(1 if failures else 0)
