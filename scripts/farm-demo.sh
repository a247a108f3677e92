#!/bin/bash
# Writes a sequence on a render farm of two nodes, all on this machine: real Slurm, a job array, one node killed in
# mid-run. Slurm starts the killed chunks again, and "zet check" looks at everything in the end.
#
#   scripts/farm-demo.sh [ZET]     as root
#
#   FRAMES=480 CHUNK=40 SIZE=1920x1080 FORMAT=422-10 KILL_AFTER=15 scripts/farm-demo.sh
set -euo pipefail

if [[ $(id -u) -ne 0 ]]; then
    echo "$0: has to run as root, for the nodes of its farm have processes and names of their own" >&2
    exit 2
fi
# So does the farm, and nothing of it outlives this script however that ends.
[[ ${FARM_HAS_NAMESPACE:-} ]] ||
    FARM_HAS_NAMESPACE=1 exec unshare --pid --fork --mount-proc --kill-child "$0" "$@"

project=$(cd "$(dirname "$0")/.." && pwd)
zet=${1:-$project/build/demo/bin/zet}
frames=${FRAMES:-480} chunk=${CHUNK:-40} size=${SIZE:-1920x1080} format=${FORMAT:-422-10}
chunks=$(((frames + chunk - 1) / chunk))

"$project/scripts/install-dependencies.sh" farm
if [[ ! -x $zet ]]; then
    "$project/scripts/install-dependencies.sh" build
    (cd "$project" && cmake --preset release -B build/demo -DBUILD_TESTING=OFF && cmake --build build/demo)
fi

farm=$(mktemp -d "${TMPDIR:-/tmp}/zet-farm-XXXXXX")
cluster=$(basename "$farm" | tr '[:upper:]' '[:lower:]')
export SLURM_CONF=$farm/slurm.conf
declare -A daemons=()

stop_farm() {
    local name
    for name in "${!daemons[@]}"; do kill -KILL "${daemons[$name]}" 2>/dev/null || true; done
    sleep 1
    if [[ ${KEEP:-} ]]; then
        echo "kept: $farm"
    else
        rm -rf "$farm"
    fi
}

# A node is a namespace with a name and processes of its own: who kills the first process takes the power from all.
start() {
    local namespaces=(unshare --pid --fork --mount-proc --kill-child)
    case $1 in
    munged)
        exec "${namespaces[@]}" munged --force --foreground --key-file "$farm/munge.key" \
            --socket "$farm/munge.socket" --pid-file "$farm/munge.pid" --log-file "$farm/munge.log" \
            --seed-file "$farm/munge.seed" ;;
    slurmctld) exec "${namespaces[@]}" slurmctld -D ;;
    zet*) exec "${namespaces[@]}" --uts bash -c 'hostname "$1"; slurmd -D -N "$1"; exit' - "$1" ;;
    esac >>"$farm/$1.out" 2>&1 &
    daemons[$1]=$!
    disown "$!" # its end is not worth a message
}

# As the service manager of a real farm does.
revive() {
    local name
    for name in "${!daemons[@]}"; do
        kill -0 "${daemons[$name]}" 2>/dev/null && continue
        echo "$name died and is started again"
        start "$name"
    done
}

# wait_for SECONDS WHAT COMMAND...
wait_for() {
    local seconds=$1 what=$2
    shift 2
    for ((; seconds > 0; --seconds)); do
        if "$@" >/dev/null 2>&1; then return; fi
        revive
        sleep 1
    done
    echo "waited in vain for $what; see $farm" >&2
    KEEP=yes
    exit 1
}

# ---- A farm of two nodes ----

trap stop_farm EXIT
trap 'exit 130' INT TERM
mkdir -p "$farm"/{state,spool,out,manifests,log}
dd if=/dev/urandom of="$farm/munge.key" bs=1 count=1024 status=none
chmod 600 "$farm/munge.key"
chmod 755 "$farm"
start munged

cat >"$SLURM_CONF" <<END
ClusterName=$cluster
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
SlurmctldPort=17100
AuthType=auth/munge
AuthInfo=socket=$farm/munge.socket,cred_expire=5
CredType=cred/munge
StateSaveLocation=$farm/state
SlurmdSpoolDir=$farm/spool/%n
SlurmctldPidFile=$farm/slurmctld.pid
SlurmdPidFile=$farm/%n.pid
SlurmctldLogFile=$farm/slurmctld.log
SlurmdLogFile=$farm/%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
# A node that says nothing for so long is taken for dead, and its jobs start again.
SlurmdTimeout=10
ReturnToService=2
JobRequeue=1
NodeName=zet[1-2] NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 Port=[17101-17102] CPUs=1
PartitionName=farm Nodes=ALL Default=YES State=UP
END
wait_for 10 munged test -S "$farm/munge.socket"
start slurmctld
start zet1
start zet2
idle_nodes() { [[ $(sinfo --noheader --format %t --Node | grep -cx idle) -eq 2 ]]; }
wait_for 30 "both nodes" idle_nodes
sinfo

# ---- The job ----

cat >"$farm/job.sh" <<END
#!/bin/bash
#SBATCH --array=0-$((chunks - 1))
#SBATCH --cpus-per-task=1 --requeue --open-mode=append
#SBATCH --output=$farm/log/chunk.%a.txt
first=\$((1 + SLURM_ARRAY_TASK_ID * $chunk))
last=\$((first + $chunk - 1 < $frames ? first + $chunk - 1 : $frames))
echo "node \$SLURMD_NODENAME, start \$((\${SLURM_RESTART_COUNT:-0} + 1)), frames \$first-\$last"
status=0
$(printf %q "$zet") write --chart $size --format $format --output '$farm/out/chart.%07d.zet' \\
    --frames \$first-\$last --jobs \$SLURM_CPUS_PER_TASK --resume --manifest $farm/manifests/chunk.\$SLURM_ARRAY_TASK_ID.txt || status=\$?
# Above 2 it was ended from outside, and the next start goes on where this one was.
if [[ \$status -gt 2 && \${SLURM_RESTART_COUNT:-0} -lt 5 ]]; then scontrol requeue "\$SLURM_JOB_ID"; fi
exit \$status
END
started=$EPOCHREALTIME
job=$(sbatch --parsable "$farm/job.sh")
echo "job $job: $frames frames of $size \"$format\" in $chunks chunks"

# ---- The accident ----

sleep "${KILL_AFTER:-15}"
written() { find "$farm/out" -name 'chart.*.zet' | wc -l; }
echo "killing zet2 with $(written) of $frames frames written; on it:"
squeue --noheader --nodelist zet2 --format '  chunk %K, %T for %M'
kill -KILL "${daemons[zet2]}"
unset "daemons[zet2]"
leftovers=$(find "$farm/out" -name '.zet-*.part' | wc -l)
node_down() { sinfo --noheader --Node --nodes zet2 --format %t | grep -q down; }
wait_for 120 "Slurm to miss zet2" node_down
echo "Slurm has missed zet2:"
squeue --noheader --states all --format '  chunk %K: %T %R' | grep -Ev 'COMPLETED' || true
start zet2
queue_is_empty() { local jobs; jobs=$(squeue --noheader) && [[ -z $jobs ]]; }
check() {
    "$zet" check "$farm/out/chart.%07d.zet" --frames "1-$frames" --format "$format" --size "$size" \
        --manifest "$farm"/manifests/*.txt
}
wait_for 1800 "the job" queue_is_empty
# What was killed in ways that Slurm does not see again is done by the same job once more; it skips what is whole.
for _ in 1 2; do
    check >/dev/null 2>&1 && break
    echo "something is missing: submitting the array again"
    sbatch --parsable "$farm/job.sh" >/dev/null
    wait_for 1800 "the job" queue_is_empty
done
taken=$(awk -v now="$EPOCHREALTIME" -v start="$started" 'BEGIN { print now - start }')

# ---- The figures ----

echo
echo "chunks that were started more than once:"
grep -hE 'start [2-9]' "$farm"/log/*.txt | sed 's/^/  /'
bytes=$(find "$farm/out" -name 'chart.*.zet' -printf '%s\n' | awk '{ sum += $1 } END { printf "%.0f", sum }')
awk -v frames="$(written)" -v bytes="$bytes" -v seconds="$taken" 'BEGIN {
    printf "%d frames, %.2f GB in %.1f s with the accident: %.1f frames/s, %.1f MB/s\n", frames, bytes / 1e9, seconds,
        frames / seconds, bytes / 1e6 / seconds }'
# A power cut leaves the frames it was at under temporary names; once nothing runs, they can go.
find "$farm/out" -name '.zet-*.part' -delete
echo "unfinished files that the accident left: $leftovers"

check
