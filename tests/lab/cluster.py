"""A whole Slurm of one's own on this machine: munged, slurmctld and some slurmd with a node each, on the loopback, with
configuration, key and spool in one directory. All of it is ended by process id."""
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

DAEMONS = ("munged", "slurmctld", "slurmd")
COMMANDS = ("sbatch", "squeue", "scontrol", "scancel", "sinfo")

CONFIGURATION = """\
ClusterName=rack
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={port}
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={place}/munge/socket,cred_expire=5
CredType=cred/munge
StateSaveLocation={place}/state
SlurmctldPidFile={place}/slurmctld.pid
SlurmctldLogFile={place}/slurmctld.log
SlurmdSpoolDir={place}/spool-%n
SlurmdPidFile={place}/slurmd-%n.pid
SlurmdLogFile={place}/slurmd-%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SwitchType=switch/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerType=sched/builtin
SchedulerParameters=batch_sched_delay=0,sched_min_interval=50000,sched_interval=1
SlurmdParameters=config_overrides
ReturnToService=2
KillWait=2
SlurmdTimeout=60
TCPTimeout=2
{nodes}PartitionName=all Nodes=ALL Default=YES State=UP MaxTime=60
"""


def missing():
    """What keeps the cluster from running; empty if nothing does."""
    names = [name for name in DAEMONS + COMMANDS if shutil.which(name, path=os.defpath + ":/usr/sbin:/sbin") is None]
    return names if os.geteuid() == 0 else names + ["the rights of root"]


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def wait_for(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > end:
            raise RuntimeError(f"{what} did not come within {seconds} s")
        time.sleep(0.05)
    return result


class Cluster:
    """`features` has those of each node; its length is the number of nodes."""

    def __init__(self, place, features):
        self.place = pathlib.Path(place)
        self.processes = {}
        self.nodes = [f"n{number}" for number in range(len(features))]
        controller, *ports = free_ports(1 + len(features))
        host = socket.gethostname().split(".")[0]
        nodes = "".join(f"NodeName={name} NodeHostname={host} NodeAddr=127.0.0.1 Port={port} CPUs=1 State=UNKNOWN"
                        f"{' Feature=' + feature if feature else ''}\n"
                        for name, port, feature in zip(self.nodes, ports, features))
        for name in ("munge", "state"):
            (self.place / name).mkdir(parents=True)
            (self.place / name).chmod(0o755)
        configuration = self.place / "slurm.conf"
        configuration.write_text(CONFIGURATION.format(host=host, port=controller, place=self.place, nodes=nodes))
        self.environment = {**os.environ, "SLURM_CONF": str(configuration),
                            "PATH": os.environ.get("PATH", os.defpath) + ":/usr/sbin:/sbin"}
        try:
            self._start_munge()
            self._start("slurmctld", ["slurmctld", "-D", "-c"])
            for name in self.nodes:
                self.start_node(name)
            wait_for("the nodes", self._idle)
        except BaseException:
            self.close()
            raise

    def _start(self, name, words):
        with open(self.place / f"{name}.out", "ab") as out:
            self.processes[name] = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=out, stderr=out,
                                                    env=self.environment)

    def _start_munge(self):
        key = self.place / "munge" / "key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o600)
        self._start("munged", ["munged", "--foreground", f"--key-file={key}", f"--socket={self.place}/munge/socket",
                               f"--pid-file={self.place}/munge/pid", f"--log-file={self.place}/munge/log",
                               f"--seed-file={self.place}/munge/seed", "--num-threads=2", "--force"])
        wait_for("munged", (self.place / "munge" / "socket").exists)

    def start_node(self, name):
        self._start(name, ["slurmd", "-D", "-N", name])

    def stop_node(self, name):
        """Ends the daemon alone; what its steps run goes on, as when a slurmd is restarted."""
        self._end(self.processes.pop(name))

    def _idle(self):
        states = self.command("sinfo", "--noheader", "--Node", "--format=%T").split()
        return len(states) == len(self.nodes) and set(states) == {"idle"}

    def command(self, *words, check=True):
        return subprocess.run(words, env=self.environment, check=check, capture_output=True, text=True).stdout

    @staticmethod
    def _end(process):
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def left(self):
        """Process ids of what the cluster started and is not a daemon of its own: steps and what runs in them."""
        wanted = f"SLURM_CONF={self.environment['SLURM_CONF']}".encode()
        daemons = {process.pid for process in self.processes.values()}
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            if entry.name.isdigit() and int(entry.name) not in daemons | {os.getpid()}:
                try:
                    if wanted in (entry / "environ").read_bytes().split(b"\0"):
                        found.append(int(entry.name))
                except OSError:
                    pass  # it has ended meanwhile
        return found

    def close(self):
        """Also ends what still runs, as after a test that failed."""
        if "slurmctld" in self.processes:
            self.command("scancel", f"--user={os.geteuid()}", check=False)
        for name in list(self.processes)[::-1]:
            self._end(self.processes.pop(name))
        for process in self.left():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        wait_for("the end of all steps", lambda: not self.left())
