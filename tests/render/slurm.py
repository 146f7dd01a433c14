"""A cluster of one machine, with everything that belongs to it in one folder."""

import getpass
import os
import shutil
import signal
import socket
import subprocess
import time

PROGRAMS = ["munged", "slurmctld", "slurmd", "sbatch", "sinfo"]
PATH = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"

CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={ports[0]}
SlurmdPort={ports[1]}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
SlurmUser={user}
SlurmdUser={user}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MpiDefault=none
SwitchType=switch/none
ReturnToService=2
SchedulerParameters=sched_interval=1,sched_min_interval=0,batch_sched_delay=0,bf_interval=1
CompleteWait=0
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
NodeName={host} NodeAddr=127.0.0.1 CPUs={processors} State=UNKNOWN
PartitionName=all Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


class CannotStart(Exception):
    """With the reason."""


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [s.getsockname()[1] for s in sockets]
    for s in sockets:
        s.close()
    return ports


class Cluster:
    """Starts in an empty folder, whose path must be short enough for a socket; ends by close()."""

    def __init__(self, folder):
        self.folder = folder
        self.started = []
        missing = [name for name in PROGRAMS if not shutil.which(name, path=PATH)]
        if missing:
            raise CannotStart("no " + ", ".join(missing))
        os.chmod(folder, 0o700)
        for name in ("state", "spool"):
            os.mkdir(os.path.join(folder, name))
        self.environment = {**os.environ, "PATH": PATH,
                            "SLURM_CONF": os.path.join(folder, "slurm.conf")}
        try:
            self.start_munge()
            self.start_slurm()
        except Exception:
            self.close()
            raise

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, *command, timeout=60):
        return subprocess.run(command, env=self.environment, capture_output=True, text=True,
                              timeout=timeout)

    def start(self, *command):
        """A daemon in the foreground, as a child that close() ends."""
        with open(self.path(command[0] + ".out"), "w") as log:
            self.started.append(subprocess.Popen(command, env=self.environment, stdout=log,
                                                 stderr=log, stdin=subprocess.DEVNULL,
                                                 start_new_session=True))

    def start_munge(self):
        with open(self.path("key"), "wb") as key:
            os.chmod(self.path("key"), 0o600)
            key.write(os.urandom(1024))
        files = [f"--{name}-file={self.path('munge.' + name)}" for name in ("pid", "log", "seed")]
        self.start("munged", "--foreground", "--force", "--key-file=" + self.path("key"),
                   "--socket=" + self.path("munge.socket"), *files)
        self.wait_for("munge.socket", lambda: os.path.exists(self.path("munge.socket")))

    def start_slurm(self):
        host = socket.gethostname().split(".")[0]
        with open(self.path("slurm.conf"), "w") as file:
            file.write(CONFIGURATION.format(
                folder=self.folder, host=host, user=getpass.getuser(), ports=free_ports(2),
                processors=min(len(os.sched_getaffinity(0)), 2)))
        self.start("slurmctld", "-D", "-f", self.path("slurm.conf"))
        self.start("slurmd", "-D", "-N", host, "-f", self.path("slurm.conf"))
        self.wait_for("an idle node",
                      lambda: self.run("sinfo", "-h", "-o", "%T").stdout.strip() == "idle")

    def wait_for(self, what, is_there, seconds=120):
        end = time.monotonic() + seconds
        while not is_there():
            dead = [process.args[0] for process in self.started if process.poll() is not None]
            if dead or time.monotonic() > end:
                raise CannotStart(f"no {what}: {self.logs()}")
            time.sleep(0.1)

    def logs(self):
        """The last lines of what the daemons said."""
        lines = []
        for name in sorted(os.listdir(self.folder)):
            if name.endswith((".out", ".log")):
                with open(self.path(name), errors="replace") as file:
                    lines += [name + ": " + line.strip() for line in file.readlines()[-3:]]
        return "; ".join(lines)

    def close(self):
        for process in reversed(self.started):
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
        for process in reversed(self.started):
            try:
                process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
