"""A print server for tests: it does not change the system's one, and several can run at the same time."""

import ctypes
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

# Replaces a printer: stores the print data and the job's options.
BACKEND = r"""#!/bin/sh
[ $# -eq 0 ] && { echo 'direct catch "Unknown" "Catch"'; exit 0; }
umask 022
folder=${DEVICE_URI#catch:}
if [ -n "${6:-}" ]; then cat "$6"; else cat; fi > "$folder/.$1.pdf"
printf '%s\n' "$2" "$3" "$4" "$5" > "$folder/.$1.txt"
mv "$folder/.$1.txt" "$folder/$1.txt"
mv "$folder/.$1.pdf" "$folder/$1.pdf"
"""

CONFIGURATION = """\
Listen {root}/run/cups.sock
Browsing Off
DefaultAuthType None
WebInterface No
LogLevel debug
MaxLogSize 0
<Location />
Order allow,deny
Allow all
</Location>
<Policy default>
<Limit All>
Order deny,allow
Allow all
</Limit>
</Policy>
"""

FILES = """\
SystemGroup root lpadmin
FileDevice Yes
ServerRoot {root}/etc
RequestRoot {root}/spool
TempDir {root}/spool/tmp
CacheDir {root}/cache
StateDir {root}/run
ServerBin {root}/bin
DataDir /usr/share/cups
AccessLog {root}/log/access
ErrorLog {root}/log/error
PageLog {root}/log/page
"""

# Width and height of the sheets, in points.
SHEETS = {"A4": (595, 842), "A5": (420, 595), "Letter": (612, 792)}


def printer_description(sheet, margin):
    """The PPD of a PDF printer whose sheets have a margin, in points, that it cannot print on."""
    def choice(option):
        code = '"<</PageSize[{0} {1}]/ImagingBBox null>>setpagedevice"'
        return (f"*OpenUI *{option}/{option}: PickOne\n*OrderDependency: 10 AnySetup *{option}\n*Default{option}: {sheet}\n"
                + "".join(f"*{option} {name}/{name}: {code.format(*size)}\n" for name, size in SHEETS.items())
                + f"*CloseUI: *{option}\n")

    areas = [f'*ImageableArea {name}/{name}: "{margin} {margin} {width - margin} {height - margin}"\n'
             for name, (width, height) in SHEETS.items()]
    dimensions = [f'*PaperDimension {name}/{name}: "{width} {height}"\n' for name, (width, height) in SHEETS.items()]
    return ('*PPD-Adobe: "4.3"\n*FormatVersion: "4.3"\n*FileVersion: "1"\n*LanguageVersion: English\n'
            '*LanguageEncoding: ISOLatin1\n*PCFileName: "CATCH.PPD"\n*Product: "(Catch)"\n*Manufacturer: "Catch"\n'
            '*ModelName: "Catch"\n*ShortNickName: "Catch"\n*NickName: "Catch, PDF"\n*PSVersion: "(3010) 0"\n'
            '*LanguageLevel: "3"\n*ColorDevice: True\n*DefaultColorSpace: RGB\n*FileSystem: False\n'
            '*cupsFilter2: "application/vnd.cups-pdf application/pdf 0 -"\n'
            + choice("PageSize") + choice("PageRegion") + f"*DefaultImageableArea: {sheet}\n" + "".join(areas)
            + f"*DefaultPaperDimension: {sheet}\n" + "".join(dimensions))


def end_with_parent():
    """In the child process: ends the server when the test is killed."""
    PR_SET_PDEATHSIG = 1
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Job:
    """A job that has reached a printer."""

    def __init__(self, path):
        self.path = path
        with open(path[:-4] + ".txt", encoding="utf-8") as file:
            self.user, self.title, self.copies, self.options = file.read().splitlines()


class PrintServer:
    """A running CUPS server; a context manager that cleans up."""

    def __enter__(self):
        self.root = tempfile.mkdtemp()
        os.chmod(self.root, 0o755)
        for folder in ("etc/ppd", "spool/tmp", "cache", "run", "log", "bin/backend", "home"):
            os.makedirs(os.path.join(self.root, folder))
        for folder in ("filter", "daemon", "monitor", "notifier", "cgi-bin", "driver"):
            os.symlink(f"/usr/lib/cups/{folder}", self.path("bin", folder))
        self.write("bin/backend/catch", BACKEND, 0o755)
        self.write("etc/cupsd.conf", CONFIGURATION.format(root=self.root))
        self.write("etc/cups-files.conf", FILES.format(root=self.root))
        self.socket = self.path("run", "cups.sock")
        self.process = subprocess.Popen(
            ["/usr/sbin/cupsd", "-f", "-c", self.path("etc", "cupsd.conf"), "-s", self.path("etc", "cups-files.conf")],
            preexec_fn=end_with_parent)
        try:
            self.wait(lambda: self.run("lpstat", "-r", check=False).stdout.startswith("scheduler is running"))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGCONT)
        self.process.terminate()
        try:
            self.process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.root)

    def path(self, *parts):
        return os.path.join(self.root, *parts)

    def write(self, name, text, mode=0o644):
        path = self.path(name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)
        return path

    def wait(self, condition, seconds=15):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            value = condition()
            if value:
                return value
            if self.process.poll() is not None:
                break
            time.sleep(0.01)
        raise AssertionError("the print server: the condition did not become true in time\n" + self.log()[-4000:])

    def log(self):
        try:
            with open(self.path("log", "error"), encoding="utf-8", errors="replace") as file:
                return file.read()
        except FileNotFoundError:
            return ""

    def environment(self):
        """The environment variables for using this server."""
        return {"CUPS_SERVER": self.socket}

    def run(self, *command, check=True):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": self.path("home"), "LC_ALL": "C.UTF-8",
                       **self.environment()}
        return subprocess.run(command, env=environment, check=check, capture_output=True, text=True, timeout=30)

    def add_queue(self, name, sheet=None, margin=12, options=()):
        """A queue for sheets of that size, of a printer with that margin. Without a size, print data are passed on
        unchanged."""
        folder = self.path("caught-" + name)
        os.makedirs(folder, exist_ok=True)
        os.chmod(folder, 0o1777)
        if sheet:
            driver = ["-P", self.write(f"etc/{name}.source.ppd", printer_description(sheet, margin))]
        else:
            driver = ["-m", "raw"]
        self.run("lpadmin", "-p", name, "-E", "-v", "catch:" + folder, *driver,
                 *(part for option in options for part in ("-o", option)))

    def set_default(self, name):
        self.run("lpadmin", "-d", name)

    def jobs(self, queue):
        """The received jobs, oldest first."""
        folder = self.path("caught-" + queue)
        names = [name for name in os.listdir(folder) if re.fullmatch(r"\d+\.pdf", name)]
        return [Job(os.path.join(folder, name)) for name in sorted(names, key=lambda name: int(name[:-4]))]

    def wait_for_jobs(self, queue, count=1):
        return self.wait(lambda: len(self.jobs(queue)) >= count and self.jobs(queue))

    def stall(self):
        """Accepts connections from now on, but never answers."""
        self.process.send_signal(signal.SIGSTOP)

    def resume(self):
        self.process.send_signal(signal.SIGCONT)

    def stop(self):
        self.process.terminate()
        self.process.wait(timeout=10)
