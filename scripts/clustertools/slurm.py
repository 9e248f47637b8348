"""A Slurm of several nodes on this machine: its settings, its processes, and commands for it."""
import contextlib
import glob
import hashlib
import json
import os
import pwd
import shutil
import signal
import socket
import subprocess
import tempfile
import time

PROGRAMS = ["munged", "slurmctld", "slurmd", "sbatch", "scontrol", "squeue"]
PATH = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
NODES = ["node1", "node2", "node3"]
# Seconds that are enough on a busy machine.
START_LIMIT = 120.0
STOP_LIMIT = 10.0
LOG_LINES = 10

SETTINGS = """ClusterName=lutestsuite
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={control_port}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket
CredType=cred/munge
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
SlurmctldPidFile={folder}/slurmctld.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdPidFile={folder}/slurmd-%n.pid
SlurmdLogFile={folder}/slurmd-%n.log
SlurmdSpoolDir={folder}/spool-%n
StateSaveLocation={folder}/state
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
ReturnToService=2
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
SlurmctldTimeout=30
SlurmdTimeout={node_timeout}
MessageTimeout={message_timeout}
InactiveLimit=0
KillWait=5
MinJobAge=300
MaxArraySize=1001
SchedulerParameters=sched_min_interval=100000,bf_interval=1
{nodes}
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""
NODE = "NodeName={name} NodeHostname={host} NodeAddr=127.0.0.1 Port={port} CPUs={processors} State=UNKNOWN"


class ClusterError(Exception):
    """An error whose message is shown to the user."""


class UnavailableError(ClusterError):
    """Slurm cannot run on this machine."""


def find_program(name):
    return shutil.which(name, path=PATH)


def find_missing_programs():
    return [name for name in PROGRAMS if find_program(name) is None]


def as_munge():
    """The words before a command that run it as user munge. Raises KeyError if there is no such user."""
    user = pwd.getpwnam("munge")
    return ["setpriv", f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}", "--clear-groups"]


def get_user_name():
    """The name of this process's user id. The environment may name another user. Raises KeyError if the id has no
    name."""
    return pwd.getpwuid(os.getuid()).pw_name


def find_obstacle():
    """The reason why Slurm cannot run on this machine; None if there is no known reason."""
    missing = find_missing_programs()
    if missing:
        return f"{', '.join(missing)} not found; scripts/setup cluster installs Slurm"
    try:
        get_user_name()
        if os.getuid() == 0:
            subprocess.run([*as_munge(), "true"], check=True, capture_output=True)
        choose_ports(1)
    except KeyError as error:
        return f"a user is missing: {error}"
    except subprocess.CalledProcessError as error:
        return f"root cannot become another user: {error.stderr.decode(errors='replace').strip()}"
    except OSError as error:
        return f"no port of the loopback device: {error}"
    return None


def choose_ports(count):
    """Different ports that are free at this moment."""
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def get_default_folder(root):
    """Each checkout and user has its own folder. It is in the temporary folder, because a socket's path is limited to
    about 100 bytes and munge's user must be able to enter the folder."""
    name = hashlib.sha256(root.encode()).hexdigest()[:10]
    return os.path.join(tempfile.gettempdir(), f"lutestsuite-cluster-{os.getuid()}-{name}")


def wait_until(condition, limit):
    end = time.monotonic() + limit
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.05)
    return True


class Cluster:
    """A Slurm whose state is in a folder. The start times of its processes are recorded there, so that a process that
    got the id of an ended process is never signalled."""

    def __init__(self, folder):
        self.folder = folder
        self.record = os.path.join(folder, "processes.json")
        self.settings = os.path.join(folder, "slurm.conf")

    # Processes

    def _read_record(self):
        try:
            with open(self.record, encoding="utf-8") as file:
                return json.load(file)
        except FileNotFoundError:
            return {}

    def _write_record(self, processes):
        with open(self.record + ".new", "w", encoding="utf-8") as file:
            json.dump(processes, file)
        os.replace(self.record + ".new", self.record)

    def get_processes(self):
        """Names and ids of the daemons that run."""
        # The start time is None if the process ended before it could be recorded.
        return {name: entry["id"] for name, entry in self._read_record().items()
                if entry["start"] is not None and get_start_time(entry["id"]) == entry["start"]}

    def _start_daemon(self, name, words, log):
        with open(os.path.join(self.folder, log), "ab") as output:
            process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                       env=self.get_environment(), start_new_session=True, cwd=self.folder)
        record = self._read_record()
        record[name] = {"id": process.pid, "start": get_start_time(process.pid)}
        self._write_record(record)
        return process

    def signal(self, name, number):
        process = self.get_processes().get(name)
        if process is not None:
            send_signal(process, number)

    # Start

    def get_environment(self):
        return {**os.environ, "SLURM_CONF": self.settings, "PATH": PATH}

    def call(self, words, limit=20):
        """The output of a Slurm command; None if it fails."""
        try:
            result = subprocess.run(words, env=self.get_environment(), capture_output=True, text=True, check=False,
                                    timeout=limit)
        except subprocess.TimeoutExpired:
            return None
        return result.stdout if result.returncode == 0 else None

    def is_running(self):
        return set(self.get_processes()) >= {"munged", "slurmctld", *NODES}

    def start(self, node_timeout=10, message_timeout=10):
        """Both timeouts are in seconds. The shorter they are, the earlier Slurm notices the end of a daemon."""
        if self.is_running():
            return False
        obstacle = find_obstacle()
        if obstacle:
            raise UnavailableError(obstacle)
        self.stop()
        self._make_folder()
        self._write_settings(node_timeout, message_timeout)
        try:
            self._start_munge()
            self._start_daemon("slurmctld", [find_program("slurmctld"), "-D", "-c"], "slurmctld.out")
            for name in NODES:
                self.start_node(name)
            self._wait_for_start(self._is_ready, START_LIMIT)
        except BaseException:
            self._end_processes()
            raise
        return True

    def _wait_for_start(self, condition, limit):
        """Waits for the condition. Raises ClusterError after `limit` seconds, or as soon as a daemon has ended."""
        def ended():
            return sorted(set(self._read_record()) - set(self.get_processes()))

        if wait_until(lambda: ended() or condition(), limit) and not ended():
            return
        problem = f"{', '.join(ended())} ended at once" if ended() else f"not ready after {limit:.0f} s"
        raise ClusterError(f"Slurm does not start: {problem}\n{self._read_logs()}")

    def _read_logs(self):
        """The last lines of each log. They are part of the error, because a build server does not show the files."""
        names = [*glob.glob(f"{self.folder}/*.out"), *glob.glob(f"{self.folder}/*.log"), f"{self.folder}/munge/log"]
        lines = []
        for name in sorted(names):
            with contextlib.suppress(OSError), open(name, encoding="utf-8", errors="replace") as file:
                lines += [f"{os.path.basename(name)}: {line.rstrip()}" for line in file.readlines()[-LOG_LINES:]]
        return "\n".join(lines)

    def _remove_folder(self):
        """Removes the folder only if it is a cluster's or empty: somebody may have named another folder by mistake."""
        if not os.path.isdir(self.folder):
            return
        names = os.listdir(self.folder)
        if names and "slurm.conf" not in names and "processes.json" not in names:
            raise ClusterError(f"{self.folder} is no folder of a cluster; nothing is deleted")
        shutil.rmtree(self.folder, ignore_errors=True)

    def _make_folder(self):
        self._remove_folder()
        # Fails if another user owns a folder of this name.
        os.mkdir(self.folder, 0o755)
        os.chmod(self.folder, 0o755)
        with open(self.settings, "wb"):
            # Marks the folder before it has other content.
            pass
        for name in ["munge", "state", *(f"spool-{node}" for node in NODES)]:
            os.mkdir(os.path.join(self.folder, name), 0o755)

    def _write_settings(self, node_timeout, message_timeout):
        control_port, *node_ports = choose_ports(1 + len(NODES))
        host = socket.gethostname().split(".")[0]
        nodes = [NODE.format(name=name, host=host, port=port, processors=os.cpu_count())
                 for name, port in zip(NODES, node_ports)]
        with open(self.settings, "w", encoding="utf-8") as file:
            file.write(SETTINGS.format(folder=self.folder, host=host, user=get_user_name(), nodes="\n".join(nodes),
                                       control_port=control_port, node_timeout=node_timeout,
                                       message_timeout=message_timeout))

    def _start_munge(self):
        """Starts munged. If this process is root, munged runs as user munge, who gets its files, because munged refuses
        to read the files of other users."""
        folder = os.path.join(self.folder, "munge")
        key = os.path.join(folder, "key")
        with open(key, "wb") as file:
            os.chmod(key, 0o600)
            file.write(os.urandom(128))
        words = [find_program("munged"), "--foreground", f"--socket={folder}/socket", f"--key-file={key}",
                 f"--pid-file={folder}/pid", f"--log-file={folder}/log", f"--seed-file={folder}/seed"]
        if os.getuid() == 0:
            user = pwd.getpwnam("munge")
            for path in (folder, key):
                os.chown(path, user.pw_uid, user.pw_gid)
            words = [*as_munge(), *words]
        self._start_daemon("munged", words, "munged.out")
        self._wait_for_start(lambda: os.path.exists(f"{folder}/socket"), START_LIMIT)

    def start_node(self, name):
        if name not in self.get_processes():
            self._start_daemon(name, [find_program("slurmd"), "-D", "-N", name], f"{name}.out")

    @staticmethod
    def nodes():
        return NODES

    def kill_tasks(self, node):
        """Kills the node's tasks with all of their processes, as if the machine were lost."""
        mark = f"SLURMD_NODENAME={node}".encode()
        # First kills the processes that monitor tasks, because they would report how the tasks end.
        for process in self.find_steps():
            if f"{self.folder}/slurmd-{node}.log" in opened_files(process):
                send_signal(process, signal.SIGKILL)
        for process in list_processes():
            variables = read_process_file(process, "environ").split(b"\0")
            if mark in variables and f"SLURM_CONF={self.settings}".encode() in variables:
                send_signal(process, signal.SIGKILL)

    def get_node_states(self):
        output = self.call(["sinfo", "--noheader", "--Node", "--format=%N %T"]) or ""
        return dict(line.split() for line in output.splitlines())

    def _is_ready(self):
        return set(self.get_node_states().values()) <= {"idle", "mixed", "allocated"} and \
            len(self.get_node_states()) == len(NODES)

    # End

    def stop(self):
        """Cancels all jobs, then ends all daemons. True if there was something to end."""
        processes = self.get_processes()
        if "slurmctld" in processes and "munged" in processes:
            self.call(["scancel", "--user", get_user_name()])
            wait_until(lambda: not (self.call(["squeue", "--noheader"]) or "").strip(), STOP_LIMIT)
        self._end_processes()
        self._remove_folder()
        return bool(processes)

    def _end_processes(self):
        for name in [*NODES, "slurmctld", "munged"]:
            self.signal(name, signal.SIGTERM)
        if not wait_until(lambda: not self.get_processes(), STOP_LIMIT):
            for name in self.get_processes():
                self.signal(name, signal.SIGKILL)
        # Tasks of a node that was killed have lost their slurmd, which would have ended them.
        for process in self.find_steps():
            send_signal(process, signal.SIGKILL)

    def find_steps(self):
        """The processes of Slurm that monitor tasks, identified by the settings file that their environment names."""
        mark = f"SLURM_CONF={self.settings}".encode()
        return [process for process in list_processes()
                if read_process_file(process, "comm").strip() == b"slurmstepd"
                and mark in read_process_file(process, "environ").split(b"\0")]


def send_signal(process, number):
    """Sends a signal. Has no effect if the process has ended meanwhile."""
    with contextlib.suppress(ProcessLookupError):
        os.kill(process, number)


def list_processes():
    return [int(name) for name in os.listdir("/proc") if name.isdigit()]


def read_process_file(process, name):
    try:
        with open(f"/proc/{process}/{name}", "rb") as file:
            return file.read()
    except OSError:
        return b""


def opened_files(process):
    files = set()
    try:
        for name in os.listdir(f"/proc/{process}/fd"):
            files.add(os.readlink(f"/proc/{process}/fd/{name}"))
    except OSError:
        pass
    return files


def get_start_time(process):
    """The start time in clock ticks since the system's start; None if the process does not exist or has ended."""
    fields = read_process_file(process, "stat").rpartition(b")")[2].split()
    return int(fields[19]) if fields and fields[0] != b"Z" else None
