#!/usr/bin/env python3
"""A fleet on a real Slurm: fleet_slurm_test.py KRLAB DIRECTORY COUNTS

Starts a cluster of four nodes in DIRECTORY, submits a plan of 24 tasks over two subjects of which one is 10 % slower in
five functions, kills one task, has one started anew and restarts a slurmd in the midst. COUNTS gets the numbers of tests as
those of the other test programs."""
import json
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import unittest

import cluster
import countedtests

TASKS = 24
PASSES = 3
FUNCTIONS = 12
SLOWER = [2, 3, 5, 7, 11]
KILLED, REQUEUED, LEFT_ALONE = 1, 2, 3

# A program in place of the rig: twelve functions with one line each. Its figures differ from pass to pass by what the length
# of its environment tells, so that the same round of the same task has the same figures. A task that a file holds stays in
# its second round until the file is gone.
RIG = r"""#!/bin/bash
keys="$*"
for word in "$@"; do case $word in -r*) table=${word#-r} ;; esac; done
functions=%(functions)d
case " $keys " in *" -e "*)
    printf '   #\tFunction\tTest\tSource\t\n'
    for ((i = 1; i <= functions; ++i)); do printf '   %%d\tf%%d\tTimX\tp_x\t\n' $i $i; done
    exit 0 ;;
esac
printf '%%s\n' 'CPU,Processor of a test, 2x2.5 GHz, ' 'OS,Linux (1, x86_64)' Computer,box 'Library,libveksc, 1.0.0, Nov 22 2026' \
    'Start,Sun Nov 22 02:25:47 2026' \
    'funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,Comment,Clocks,per,Time (usec),MFlops' >>$table
for ((i = 1; i <= functions; ++i)); do
    clocks=$((64000 + 640 * i))
    case " %(slower)s " in *" $i "*) clocks=$((clocks + clocks / 10)) ;; esac
    clocks=$((clocks + clocks * ((${#KRLAB_PADDING} * (i + 3)) %% 11) / 2000))
    call=$((clocks / 64))
    echo "f$i,-,-,8,-,-,-,-,-,nLps=64,3.14,e,0.01,-" >>$table
    printf '| Function  : f%%d                     Sun Nov 22 02:25:49 2026|\n| Test      : TimX |\n| Source    : p_x |\n len = 8\n' $i
    printf 'len=8 \n    Auto method: start\n    Iteration Measurement: \n        stopLoops  = 64\n'
    printf '        stopClocks = %%d\n        funcClocks = %%d\n    Auto method: stop\n' $clocks $call
    printf '  acc=0.5%%%%   nLps=64     perf= %%8d/        8=      125 clocks\n| -OK         f%%d     Sun Nov 22 02:25:49 2026|\n' $call $i
done
sleep %(sleep)s
readarray -d '' lab </proc/$PPID/cmdline
hold=%(place)s/hold.${lab[4]}
if [ -e "$hold" ]; then
    echo >>"$hold.passes"
    while [ -e "$hold" ] && (($(wc -l <"$hold.passes") > 2)); do sleep 0.05; done
fi
printf '| KR Summary        |\n| .Number of tests : %%d |\n' $functions
"""


class FleetOnSlurm(unittest.TestCase):
    """One cluster for all tests."""

    @classmethod
    def setUpClass(cls):
        cls.cluster = cluster.Cluster(pathlib.Path("cluster").absolute(), ["small"] * 2 + ["large"] * 2)

    @classmethod
    def tearDownClass(cls):
        # As if a test had failed: what runs ends with the cluster, or closing it raises an error.
        cls.cluster.command("sbatch", "--output=/dev/null", "--wrap=sleep 60")
        cluster.wait_for("a step", cls.cluster.left)
        cls.cluster.close()

    def krlab(self, *words, status=0):
        done = subprocess.run([KRLAB, *words], env=self.cluster.environment, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, status, f"{words}: {done.stdout} {done.stderr}")
        return done

    def json(self, *words, status=0):
        return json.loads(self.krlab(*words, "--json", "-", status=status).stdout)

    def plan(self, name, tasks, sleep, **more):
        place = pathlib.Path(name)
        place.mkdir()
        for subject, slower in (("before", []), ("after", SLOWER)):
            rig = place / subject
            rig.write_text(RIG % {"functions": FUNCTIONS, "slower": " ".join(map(str, slower)), "sleep": sleep,
                                  "place": place.absolute()})
            rig.chmod(rig.stat().st_mode | stat.S_IXUSR)
        plan = {"schema": "krlab-fleet-1", "name": name, "passes": PASSES, "seed": 7, "time": "5m",
                "subjects": [{"name": subject, "path": subject} for subject in ("before", "after")],
                "selections": [["-ff"]], "nodes": [{"tasks": tasks}], **more}
        (place / "plan.json").write_text(json.dumps(plan))
        return str(place / "plan.json")

    def tasks(self, folder):
        return self.json("fleet", "status", folder)["tasks"]

    @staticmethod
    def hold(name, tasks):
        """Files that keep the tasks from ending."""
        holds = [pathlib.Path(name, f"hold.{task}") for task in tasks]
        for file in holds:
            file.touch()
        return holds

    def wait_for_round(self, folder, task):
        """Until the task, which a file holds, has finished a round."""
        def reached():
            state = self.tasks(folder)[task]
            self.assertNotEqual(state["state"], "whole", f"task {task} was not held")
            return state["state"] == "running" and state["rounds"] > 0 and state
        return cluster.wait_for(f"a round of task {task}", reached, 60)

    def wait_for_end(self, folder):
        """As `--wait` does, and sooner."""
        cluster.wait_for("the end", lambda: all(task["state"] in ("whole", "ended") for task in self.tasks(folder)), 120)

    @staticmethod
    def verdicts(report):
        return {line["function"]: line["verdict"] for line in report["lines"]}

    def test_killed_requeued_and_restarted_tasks_change_no_verdict_and_count_once(self):
        plan = self.plan("disturbed", TASKS, 0.25)
        holds = self.hold("disturbed", [KILLED, REQUEUED, LEFT_ALONE])
        made = self.json("fleet", "submit", plan, "--folder", "disturbed/folder")
        folder, job = made["folder"], made["job"]
        self.assertEqual(made["tasks"], f"0-{TASKS - 1}")

        self.wait_for_round(folder, KILLED)
        self.cluster.command("scancel", "--signal=KILL", "--full", f"{job}_{KILLED}")
        cluster.wait_for("the end of the killed task", lambda: self.tasks(folder)[KILLED]["state"] == "ended", 60)
        self.wait_for_round(folder, REQUEUED)
        self.cluster.command("scontrol", "requeue", f"{job}_{REQUEUED}")
        # The daemon goes and comes back while a task runs on its node.
        node = self.wait_for_round(folder, LEFT_ALONE)["node"]
        self.cluster.stop_node(node)
        self.cluster.start_node(node)
        for file in holds:
            file.unlink()

        self.wait_for_end(folder)
        status = self.json("fleet", "status", folder)
        self.assertEqual(status["summary"], {"whole": TASKS - 1, "running": 0, "waiting": 0, "ended": 1}, status)
        self.assertEqual(status["tasks"][KILLED]["state"], "ended")

        # What the killed task had finished counts; each pass counts once, however often it is fetched.
        fetched = self.json("fleet", "fetch", folder, "--store", "all.db")
        self.assertEqual((fetched["whole"], fetched["parts"], fetched["failures"]), (TASKS - 1, 1, []))
        lost = 2 * PASSES * TASKS - fetched["passes"]
        self.assertGreater(lost, 0)
        self.assertLess(lost, 2 * PASSES)
        self.assertEqual(fetched["figures"], FUNCTIONS * fetched["passes"])
        self.assertEqual(self.json("fleet", "fetch", folder, "--store", "all.db")["passes"], 0)
        expected = {f"f{i}": "slower" if i in SLOWER else "same" for i in range(1, FUNCTIONS + 1)}
        self.assertEqual(self.verdicts(self.json("ab", "--fleet", "all.db", status=1)), expected)

        # What is missing is submitted again, and goes on behind the finished rounds.
        self.assertEqual(self.json("fleet", "submit", folder)["tasks"], str(KILLED))
        self.wait_for_end(folder)
        self.assertEqual(self.json("fleet", "fetch", folder, "--store", "all.db")["passes"], lost)
        whole = self.json("ab", "--fleet", "all.db", status=1)
        undisturbed = self.undisturbed()
        self.assertEqual(self.verdicts(undisturbed), expected)
        for member in ("lines", "machines", "summary", "rounds"):
            self.assertEqual(whole[member], undisturbed[member], member)
        self.assertEqual(whole["rounds"], PASSES * TASKS)
        # The page has the axis of machines, and other commands take the merged store.
        made = self.json("report", "--fleet", "all.db", status=1)
        self.assertEqual([len(kind["lines"]) for kind in made["kinds"]], [FUNCTIONS])
        self.json("report", "all.db")

    def undisturbed(self):
        """The tasks of the same plan, run without Slurm."""
        shutil.copytree("disturbed/folder", "calm")
        for file in [*pathlib.Path("calm/tasks").iterdir(), *pathlib.Path("calm/logs").iterdir()]:
            file.unlink()
        running = [subprocess.Popen([KRLAB, "fleet", "task", "calm", str(task), "--quiet"]) for task in range(TASKS)]
        self.assertEqual([process.wait() for process in running], [0] * TASKS)
        return self.json("ab", "--fleet", "calm", status=1)

    def test_tasks_go_to_the_nodes_that_their_features_name(self):
        plan = self.plan("kinds", 1, 0.05, passes=1,
                         nodes=[{"features": "large", "tasks": 2}, {"features": "small", "tasks": 2}])
        folder = self.json("fleet", "submit", plan, "--folder", "kinds/folder")["folder"]
        self.wait_for_end(folder)
        nodes = [task["node"] for task in self.tasks(folder)]
        self.assertLessEqual(set(nodes[:2]), {"n2", "n3"})
        self.assertLessEqual(set(nodes[2:]), {"n0", "n1"})

    def test_a_cancelled_fleet_keeps_its_finished_rounds(self):
        plan = self.plan("cancelled", 8, 0.05)
        self.hold("cancelled", range(8))
        folder = self.json("fleet", "submit", plan, "--folder", "cancelled/folder")["folder"]
        cluster.wait_for("a round", lambda: any(task["rounds"] > 0 for task in self.tasks(folder)), 60)
        self.krlab("fleet", "cancel", folder)
        self.krlab("fleet", "status", folder, "--wait")
        summary = self.json("fleet", "status", folder)["summary"]
        self.assertEqual((summary["waiting"], summary["running"]), (0, 0))
        self.assertGreater(summary["ended"], 0)
        self.assertGreater(self.json("fleet", "fetch", folder, "--store", "cancelled/c.db")["passes"], 0)

    def test_what_slurm_refuses_is_told_in_one_line_and_leaves_nothing(self):
        plan = self.plan("refused", 1, 0.05, nodes=[{"features": "green", "tasks": 1}])
        told = self.krlab("fleet", "submit", plan, "--folder", "refused/folder", status=2).stderr
        self.assertEqual(told.count("\n"), 1, told)
        self.assertIn("no node has these \"features\"; scontrol show nodes tells those that there are", told)
        self.assertFalse(os.path.exists("refused/folder"))
        plan = self.plan("toomany", 2000, 0.05)
        told = self.krlab("fleet", "submit", plan, "--folder", "toomany/folder", status=2).stderr
        self.assertIn("raise MaxArraySize, or split the plan", told)


if __name__ == "__main__":
    KRLAB = countedtests.krlab()
    sys.exit(countedtests.run(FleetOnSlurm, cluster.missing()))
