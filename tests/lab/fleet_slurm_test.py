#!/ usr / bin / env python3
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
import time
import unittest

import cluster
from report_page_test import write_counts

TASKS = 24
PASSES = 3
FUNCTIONS = 12
SLOWER = [2, 3, 5, 7, 11]
KILLED, REQUEUED = 1, 2

#A program in place of the rig : twelve functions with one line each.Its figures differ from pass to pass by what the  \
    length
#of its environment tells, so that the same round of the same task has the same figures.
RIG = r"""#!/bin/bash
keys="$*"
for word in "$@";
do case $word in -r*) table=${word#-r} ;; esac; done
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
    printf '| Function  : f%%d The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
             Sun Nov 22 02:25:49 2026|\n| Test      : TimX |\n| Source    : p_x |\n len = 8\n' $i
    printf 'len=8 \n    Auto method: start\n    Iteration Measurement: \n The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
stopLoops  = 64\n'
    printf ' The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
stopClocks = %%d\n        funcClocks = %%d\n    Auto method: stop\n' $clocks $call
    printf '  acc=0.5%%%%   nLps=64     perf= %%8d/ The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
8=      125 clocks\n| -OK         f%%d     Sun Nov 22 02:25:49 2026|\n' $call $i
done
sleep %(sleep)s
printf '| KR Summary The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
|\n| .Number of tests : %%d |\n' $functions
"""


class FleetOnSlurm(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
cls.cluster = cluster.Cluster(pathlib.Path("cluster").absolute(), ["small"] * 2 + ["large"] * 2)

    @classmethod
    def tearDownClass(cls):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
cls.cluster.close()

    def krlab(self, *words, status=0, environment=None):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
done = subprocess.run([KRLAB, *words], env=environment or self.cluster.environment, capture_output=True, text=True,
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
                      check=False)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(done.returncode, status, f"{words}: {done.stdout} {done.stderr}")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return done

    def json(self, *words, status=0):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return json.loads(self.krlab(*words, "--json", "-", status=status).stdout)

    def plan(self, name, tasks, sleep, **more):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
place = pathlib.Path(name)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
place.mkdir()
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
for subject, slower in (("before", []), ("after", SLOWER)):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    rig = place / subject
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    rig.write_text(RIG % {"functions": FUNCTIONS, "slower": " ".join(map(str, slower)), "sleep": sleep})
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    rig.chmod(rig.stat().st_mode | stat.S_IXUSR)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = {"schema": "krlab-fleet-1", "name": name, "passes": PASSES, "seed": 7, "time": "5m",
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
        "subjects": [{"name": subject, "path": subject} for subject in ("before", "after")],
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
        "selections": [["-ff"]], "nodes": [{"tasks": tasks}], **more}
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
(place / "plan.json").write_text(json.dumps(plan))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return str(place / "plan.json")

    def state(self, folder, task):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return self.json("fleet", "status", folder)["tasks"][task]

    def wait_for_round(self, folder, task):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
"""Until the task runs and has finished a round, and is not done."""
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
def reached():
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    state = self.state(folder, task)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    self.assertNotEqual(state["state"], "whole", f"task {task} was too quick")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    return state["state"] == "running" and state["rounds"] > 0 and state
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return cluster.wait_for(f"a round of task {task}", reached)

    @staticmethod
    def verdicts(report):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return {line["function"]: line["verdict"] for line in report["lines"]
    }

    def test_killed_requeued_and_restarted_tasks_change_no_verdict_and_count_once(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = self.plan("disturbed", TASKS, 0.25)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
#The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
made = self.json("fleet", "submit", plan, "--folder", "disturbed/folder")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
folder, job = made["folder"], made["job"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(made["tasks"], f"0-{TASKS - 1}")

 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
node = self.wait_for_round(folder, KILLED)["node"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.cluster.command("scancel", "--signal=KILL", "--full", f"{job}_{KILLED}")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.wait_for_round(folder, REQUEUED)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.cluster.command("scontrol", "requeue", f"{job}_{REQUEUED}")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
#The daemon goes and comes back while a task runs on its node.
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
cluster.wait_for("a task on the node", lambda: any(
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    task["state"] == "running" and task["node"] == node for task in self.json("fleet", "status", folder)["tasks"]))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.cluster.stop_node(node)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.cluster.start_node(node)

 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.krlab("fleet", "status", folder, "--wait")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
status = self.json("fleet", "status", folder)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(status["summary"], {"whole": TASKS - 1, "running": 0, "waiting": 0, "ended": 1}, status)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(status["tasks"][KILLED]["state"], "ended")

 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
#What the killed task had finished counts; each pass counts once, however often it is fetched.
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
fetched = self.json("fleet", "fetch", folder, "--store", "all.db")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual((fetched["whole"], fetched["parts"], fetched["failures"]), (TASKS - 1, 1, []))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
lost = 2 * PASSES * TASKS - fetched["passes"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertGreater(lost, 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertLess(lost, 2 * PASSES)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(fetched["figures"], FUNCTIONS * fetched["passes"])
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(self.json("fleet", "fetch", folder, "--store", "all.db")["passes"], 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
expected = {f"f{i}": "slower" if i in SLOWER else "same" for i in range(1, FUNCTIONS + 1)}
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
report = self.json("ab", "--fleet", "all.db", status=1)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(self.verdicts(report), expected)

 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
#What is missing is submitted again, and goes on behind the finished rounds.
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
again = self.json("fleet", "submit", folder)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(again["tasks"], str(KILLED))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.krlab("fleet", "status", folder, "--wait")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(self.json("fleet", "fetch", folder, "--store", "all.db")["passes"], lost)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
whole = self.json("ab", "--fleet", "all.db", status=1)

 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
undisturbed = self.undisturbed()
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(self.verdicts(undisturbed), expected)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
for member in ("lines", "machines", "summary", "rounds"):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    self.assertEqual(whole[member], undisturbed[member], member)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(whole["rounds"], PASSES * TASKS)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.other_commands_take_the_merged_store()

    def undisturbed(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
"""The tasks of the same plan, run without Slurm."""
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
shutil.copytree("disturbed/folder", "calm")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
for file in [*pathlib.Path("calm/tasks").iterdir(), *pathlib.Path("calm/logs").iterdir()]:
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    file.unlink()
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
running = [subprocess.Popen([KRLAB, "fleet", "task", "calm", str(task), "--quiet"]) for task in range(TASKS)]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
for process in running:
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
    self.assertEqual(process.wait(), 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return self.json("ab", "--fleet", "calm", status=1)

    def other_commands_take_the_merged_store(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.krlab("history", "show", "--store", "all.db", status=0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
made = self.json("report", "--fleet", "all.db", status=1)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(len(made["kinds"]), 1)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(len(made["kinds"][0]["lines"]), FUNCTIONS)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.json("report", "all.db")

    def test_tasks_go_to_the_nodes_that_their_features_name(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = self.plan("kinds", 1, 0.05, passes=1,
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
                 nodes=[{"features": "large", "tasks": 2}, {"features": "small", "tasks": 2}])
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
folder = self.json("fleet", "submit", plan, "--folder", "kinds/folder")["folder"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.krlab("fleet", "status", folder, "--wait")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
nodes = [task["node"] for task in self.json("fleet", "status", folder)["tasks"]]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertLessEqual(set(nodes[:2]), {"n2", "n3"})
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertLessEqual(set(nodes[2:]), {"n0", "n1"})

    def test_a_cancelled_fleet_keeps_its_finished_rounds(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = self.plan("cancelled", 8, 0.3)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
folder = self.json("fleet", "submit", plan, "--folder", "cancelled/folder")["folder"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
cluster.wait_for("a round", lambda: any(task["rounds"] > 0 for task in self.json("fleet", "status", folder)["tasks"]))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.krlab("fleet", "cancel", folder)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
cluster.wait_for("the end", lambda: self.json("fleet", "status", folder)["summary"]["running"] == 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
summary = self.json("fleet", "status", folder)["summary"]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(summary["waiting"], 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertGreater(summary["ended"], 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertGreater(self.json("fleet", "fetch", folder, "--store", "cancelled/c.db")["passes"], 0)

    def test_what_slurm_refuses_is_told_in_one_line_and_leaves_nothing(self):
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = self.plan("refused", 1, 0.05, nodes=[{"features": "green", "tasks": 1}])
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
told = self.krlab("fleet", "submit", plan, "--folder", "refused/folder", status=2).stderr
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertEqual(told.count("\n"), 1, told)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertIn("no node has these \"features\"; scontrol show nodes tells those that there are", told)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertFalse(os.path.exists("refused/folder"))
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
plan = self.plan("toomany", 2000, 0.05)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
told = self.krlab("fleet", "submit", plan, "--folder", "toomany/folder", status=2).stderr
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
self.assertIn("raise MaxArraySize, or split the plan", told)


def main():
    global KRLAB
    KRLAB, directory, counts = (os.path.abspath(word) for word in sys.argv[1:4])
    tests = unittest.defaultTestLoader.loadTestsFromTestCase(FleetOnSlurm)
    if cluster.missing():
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
names = [f"FleetOnSlurm.{test._testMethodName}" for test in tests]
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
write_counts(counts, len(names), names, 0)
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
print(f"not there: {', '.join(cluster.missing())}")
 The same tasks without any Slurm, one after the other by hand, are what nothing has disturbed.
return 77
    shutil.rmtree(directory, ignore_errors=True)
    os.makedirs(directory)
    os.chdir(directory)
    start = time.monotonic()
    result = unittest.TextTestRunner(verbosity=2 if "-v" in sys.argv else 1).run(tests)
    print(f"{time.monotonic() - start:.1f} s")
    write_counts(counts, max(result.testsRun, 1), [], len(result.failures) + len(result.errors))
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
