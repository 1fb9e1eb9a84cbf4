#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The sandbox seen from outside: host_test.sh LAUNCHER TEST_PROGRAM CASE. Runs on the machine itself, and starts nothing
# of the library but in the sandbox.
set -u
launcher=$1
program=$2
case=$3

fail() {
	echo "FAILED: $*" >&2
	exit 1
}

equal() { [ "$1" = "$2" ] || fail "expected <$1>, found <$2>"; }

# A line that no other process of the machine has in its arguments.
mark=kestrove-sandbox-test-$$-$RANDOM
scratch=$(mktemp -d)
chmod 755 "$scratch"
trap 'rm -rf "$scratch"' EXIT

marked() { grep -lsa "[k]${mark#k}" /proc/[0-9]*/cmdline | wc -l; }

# Waits until processes with the mark are there (yes) or gone (no).
until_marked() {
	for _ in $(seq 100); do
		[ "$(marked)" = 0 ] && found=no || found=yes
		[ "$found" = "$1" ] && return
		sleep 0.05
	done
	fail "processes of the appliance: $(marked)"
}

# What the appliance's programs change: mounts, system files, segments, links, networks. Only names where the machine's
# own services may write meanwhile.
machine() {
	cut -d' ' -f 4- /proc/self/mountinfo
	find /etc/passwd* /etc/group* /etc/hosts /etc/resolv.conf /etc/.pwd.lock /etc/config /var/lock /var/log/kestrove \
		/var/lib/dhcpcd /var/config /run/kestrove /run/netns /old_dir /dev/null -printf '%p %s %m %u %i %T@\n' 2>/dev/null
	find / /etc /var /usr/local /dev -xdev -maxdepth 1 -printf '%p %m %u\n'
	ls /tmp | grep -E 'restore_file|mii|mark-of-the-appliance'
	ipcs -m | grep -v ' 0x00000000\|^0x00000000'
	ip -o link
	ip netns list
	cat /proc/sys/kernel/hostname /proc/sys/net/ipv4/ip_forward
}

as_nobody() {
	if [ "$(id -u)" = 0 ]; then
		cp -r "$(dirname "$launcher")"/kestrove-* "$(dirname "$launcher")"/image "$scratch"
		(cd "$scratch" && setpriv --reuid=65534 --regid=65534 --clear-groups ./kestrove-sandbox "$@")
	else
		"$launcher" "$@"
	fi
}

# A script that does what the library may do, and worse.
cat > "$scratch/mischief" <<END
echo "intruder:x:0:0::/root:/bin/sh" >> /etc/passwd
echo x > /etc/config/kestrove.conf
mkdir -p /old_dir/mark /var/mark /tmp/mark-of-the-appliance
ipcmk -M 4096
hostname other
/usr/bin/init-bridging eth0 eth1
/sbin/vconfig add eth0 12
echo 1 > /proc/sys/net/ipv4/ip_forward
/sbin/iptables -A FORWARD -j DROP
/sbin/ip rule flush
/bin/date -s 2001-01-01
/sbin/hwclock -u --systohc
/sbin/reboot
/sbin/poweroff
chmod 600 /dev/null
rm -rf /usr/local/bin
bash -c "sleep 1000; echo $mark" &
for _ in 1 2 3 4 5; do sleep 0.01; done
END

LeavesNothingBehind() {
	before=$(machine)
	"$launcher" --bind "$scratch" -- sh "$scratch/mischief" >"$scratch/output" 2>&1
	equal 0 $?
	grep -q "not permitted\|No such\|cannot" "$scratch/output" && fail "$(cat "$scratch/output")"
	equal 0 "$(marked)"
	diff <(echo "$before") <(machine) || fail "the machine has changed"
}

KilledLauncherTakesAllWithIt() {
	for signal in KILL TERM; do
		before=$(machine)
		"$launcher" -- sh -c "sleep 1000 & exec bash -c 'sleep 1000; echo $mark'" &
		until_marked yes
		kill -$signal $!
		wait $! 2>/dev/null
		until_marked no
		diff <(echo "$before") <(machine) || fail "the machine has changed"
	done
}

ExitStatusIsTheCommands() {
	for status in 0 1 77 255; do
		"$launcher" --no-ports -- sh -c "exit $status"
		equal $status $?
	done
	"$launcher" --no-ports -- sh -c 'kill -9 $$'
	equal 137 $?
	"$launcher" --no-ports -- sh -c 'kill -SEGV $$'
	equal 139 $?
}

FailuresToStartHaveTheirOwnStatus() {
	equal 127 "$("$launcher" --no-ports -- no-such-program 2>/dev/null; echo $?)"
	equal 126 "$("$launcher" --no-ports -- /etc/passwd 2>/dev/null; echo $?)"
	equal 125 "$("$launcher" 2>/dev/null; echo $?)"
	equal 125 "$("$launcher" --no-such-option -- true 2>/dev/null; echo $?)"
	equal 125 "$("$launcher" --state /proc/none -- true 2>/dev/null; echo $?)"
	equal 125 "$("$launcher" --bind /no/such/file -- true 2>/dev/null; echo $?)"
}

HelpNamesEveryOption() {
	text=$("$launcher" --help)
	for option in real record ports no-ports state share bind no-overlay help; do
		[[ $text == *" --$option "* ]] || fail "--$option"
	done
}

# A user namespace has limits of its own; this one allows no networks below it.
MissingNamespaceIsNamedInOneLine() {
	text=$(unshare -Ur sh -c "echo 0 > /proc/sys/user/max_net_namespaces; exec '$launcher' -- true" 2>&1)
	equal 125 $?
	equal "kestrove-sandbox: this system gives no network namespace: No space left on device" "$text"
	text=$(unshare -Ur sh -c "echo 0 > /proc/sys/user/max_user_namespaces
		exec setpriv --bounding-set=-sys_admin --inh-caps=-all '$launcher' -- true" 2>&1)
	equal 125 $?
	equal "kestrove-sandbox: this system gives no user namespace to an ordinary user: No space left on device" "$text"
}

OrdinaryUserGetsTheSame() {
	text=$(as_nobody -- sh -c '
		id -u
		echo "a:b" >> /etc/passwd && tail -n 1 /etc/passwd
		echo x > /etc/config/kestrove.conf && cat /etc/config/kestrove.conf
		/usr/bin/init-bridging eth0 eth1
		ip netns exec lan ping -q -c 1 -W 3 192.168.10.3 | grep -o "1 received"
		/sbin/reboot; grep -acx 12:/sbin/reboot /run/kestrove/commands')
	equal "0 a:b x 1 received 1" "$(echo $text)"
	equal "$(id -u)" "$(stat -c %u "$scratch")"
}

WithoutOverlayTheSame() {
	text=$("$launcher" --no-overlay -- sh -c '
		grep -c overlay /proc/mounts
		echo "a:b" >> /etc/passwd && tail -n 1 /etc/passwd
		echo x > /etc/config/kestrove.conf && cat /etc/config/kestrove.conf
		/usr/bin/init-bridging eth0 eth1
		ip netns exec lan ping -q -c 1 -W 3 192.168.10.3 | grep -o "1 received"
		touch /usr/include/mark 2>/dev/null || echo read-only')
	equal "0 a:b x 1 received read-only" "$(echo $text)"
	grep -q '^a:b' /etc/passwd && fail "the machine has changed"
	return 0
}

StateIsKept() {
	"$launcher" --no-ports --state "$scratch/state" -- sh -c 'echo 1 > /etc/config/a; echo 2 > /var/log/kestrove/b; echo 3 > /etc/c'
	equal "1 2" "$("$launcher" --no-ports --state "$scratch/state" -- sh -c 'cat /etc/config/a /var/log/kestrove/b /etc/c' 2>/dev/null | xargs)"
	equal "a b" "$(ls "$scratch"/state/config "$scratch"/state/log | grep -v : | xargs)"
}

SharedFolderIsReallyChanged() {
	mkdir "$scratch/shared"
	"$launcher" --no-ports --share "$scratch/shared" -- sh -c "echo 1 > $scratch/shared/a; echo 2 > $scratch/b" 2>/dev/null
	equal 1 "$(cat "$scratch/shared/a")"
	[ ! -e "$scratch/b" ] || fail "another folder was changed"
}

ShownFileIsReadOnly() {
	echo text > "$scratch/file"
	equal text "$("$launcher" --no-ports --bind "$scratch/file" -- cat "$scratch/file")"
	"$launcher" --no-ports --bind "$scratch/file" -- sh -c "echo other > $scratch/file" 2>/dev/null && fail "was written"
	equal text "$(cat "$scratch/file")"
}

BuildBelowTmpIsVisible() {
	mkdir -p "$scratch/build"
	cp -r "$(dirname "$launcher")"/kestrove-* "$(dirname "$launcher")"/image "$scratch/build"
	cd "$scratch/build" || fail "cd"
	equal "$scratch/build" "$(./kestrove-sandbox --no-ports -- pwd)"
	equal "$(basename "$scratch")" "$(./kestrove-sandbox --no-ports -- ls /tmp)"
}

RunsInsideItself() {
	equal "inner 2 eth0" "$("$launcher" --no-ports -- "$launcher" --ports -- sh -c \
		'echo inner; sh -c : ; grep -ac ^shell /run/kestrove/commands; ip -o link show eth0 | grep -o eth0' | xargs)"
}

# A folder with a shell in it, which is no mount point: what chroot leaves of a machine at the least. Mounts are shared,
# so that one made too early would show outside.
PlainChrootIsMachineEnough() {
	mkdir "$scratch/chroot"
	cat > "$scratch/chroot/machine" <<-END
		mount -t tmpfs none /srv
		cd /srv
		mkdir -p dev proc sys etc tmp run var home/deep bin
		for program in sh cat ls; do
			cp /run/kestrove/real/\$program bin 2>/dev/null || cp /bin/\$program bin
			for library in \$(ldd bin/\$program | grep -o '/[^ ]*'); do cp --parents \$library .; done
		done
		cp -r "$(dirname "$launcher")"/kestrove-* "$(dirname "$launcher")"/image home
		echo "root:x:0:0::/root:/bin/sh" > etc/passwd
		mkdir /srv/root && mv * root 2>/dev/null
		mount --bind /dev root/dev
		mount -t tmpfs none root/home/deep
		echo deep > root/home/deep/file
		mount --make-rshared /
		cat /proc/self/mountinfo > /tmp/before
		chroot root /home/kestrove-sandbox \$1 --no-ports -- sh -c '
			echo "a:b" >> /etc/passwd && cat /etc/passwd
			echo x > /etc/config/kestrove.conf && cat /etc/config/kestrove.conf /home/deep/file
			ls /proc/self/root/../home
			echo quiet > /dev/null'
		cat root/etc/passwd
		ls root/proc root/sys root/etc
		cat /proc/self/mountinfo | diff /tmp/before -
	END
	for overlay in "" --no-overlay; do
		text=$("$launcher" --no-ports --bind "$scratch/chroot" -- sh "$scratch/chroot/machine" $overlay 2>&1)
		root=root:x:0:0::/root:/bin/sh
		equal "$root a:b x deep deep image kestrove-recorder kestrove-sandbox $root root/etc: passwd root/proc: root/sys:" \
			"$(echo $text)"
	done
}

# The machine is a sandbox here, in which file systems can be mounted.
FileSystemsBelowTheRootStayVisible() {
	mkdir "$scratch/inner"
	cat > "$scratch/inner/machine" <<-END
		mkdir -p /srv/deep/place
		for folder in /opt /var/lib /srv/deep/place; do
			mount -t tmpfs none \$folder
			echo \$folder > \$folder/file
		done
		echo "nameserver 9.9.9.9" > /tmp/resolver
		mount --bind /tmp/resolver /etc/resolv.conf
		mkdir -p /etc/config
		echo foreign > /etc/config/kestrove.conf
		"$launcher" \$1 --no-ports --bind "$scratch" -- sh "$scratch/inner/appliance"
		cat /opt/file /tmp/resolver
		ls /var/lib
	END
	cat > "$scratch/inner/appliance" <<-END
		cat /opt/file /var/lib/file /srv/deep/place/file /etc/resolv.conf
		ls -d /var/lib/dhcpcd
		ls /etc/config
		echo changed > /var/lib/dhcpcd/mine && echo own
		echo changed > /srv/deep/place/file || echo read-only
		echo changed > /etc/resolv.conf
		echo changed > /opt/file
	END
	for overlay in "" --no-overlay; do
		text=$("$launcher" --no-ports --bind "$scratch/inner" -- sh "$scratch/inner/machine" $overlay 2>/dev/null)
		equal "/opt /var/lib /srv/deep/place nameserver 9.9.9.9 /var/lib/dhcpcd own read-only /opt nameserver 9.9.9.9 file" \
			"$(echo $text)"
	done
}

# Were the privilege still there, the clock would be set to what it is.
RootMayNotTouchTheMachine() {
	text=$("$launcher" --no-ports -- sh -c '
		/run/kestrove/real/date -s "@$(date +%s)" >/dev/null && echo clock
		cat /proc/sys/kernel/panic > /proc/sys/kernel/panic && echo switch
		true > /proc/sysrq-trigger && echo request
		mknod /tmp/disk b 254 0 && echo device
		touch /sys/mark && echo sys
		ls -d /proc/[0-9]* | wc -l' 2>/dev/null)
	[ "$text" -lt 8 ] || fail "$text"
}

# The guard of the test programs, tried where a failing guard does no harm.
TestProgramsRefuseToRunOutside() {
	text=$("$launcher" --no-ports -- sh -c "rm /run/kestrove/inside; '$program' --gtest_filter=Inside.*" 2>&1)
	equal 99 $?
	equal "$program runs in the sandbox only: kestrove-sandbox -- $program" "$text"
}

# Processor time, which other work of the machine does not lengthen much; starts in milliseconds.
milliseconds_of_20() {
	TIMEFORMAT='%U %S'
	used=$({ time for _ in $(seq 20); do "$launcher" "$1" -- true; done; } 2>&1)
	echo "$used" | awk '{printf "%d\n", ($1 + $2) * 1000 / 20}'
}

StartsQuickly() {
	plain=$(milliseconds_of_20 --no-ports)
	echo "without ports: $plain ms"
	echo "with ports: $(milliseconds_of_20 --ports) ms"
	[ "$plain" -lt 300 ] || fail "too slow to run each test in an appliance of its own"
}

"$case" || fail "$case"
