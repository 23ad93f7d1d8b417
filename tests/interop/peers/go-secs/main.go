// A host or an equipment on go-secs, driven by lines of JSON: ../README.md tells the interface.
package main

import (
	"bufio"
	"context"
	"fmt"
	"os"
	"time"

	"github.com/arloliu/go-secs/v2/hsms"
)

const longestLine = 64 << 20

func main() {
	out := os.Stdout
	os.Stdout = os.Stderr // the stack's log goes to the standard output
	if err := run(out, os.Args[1:]); err != nil {
		fmt.Fprintln(os.Stderr, "peer:", err)
		os.Exit(1)
	}
}

func run(out *os.File, arguments []string) error {
	o, err := readOptions(arguments)
	if err != nil {
		return err
	}
	l, err := newLink(o)
	if err != nil {
		return err
	}
	p := &peer{
		link:    l,
		events:  &events{out: out},
		answers: &answers{equipment: o.equipment, useDefaults: true, told: map[messageName]*answer{}},
		hsms:    o.transport == "hsms",
		t3:      45 * time.Second,
		own:     map[uint32]chan *hsms.DataMessage{},
	}
	if t3, told := o.times["t3"]; told {
		p.t3 = t3
	}
	l.AddDataMessageHandler(p.received)
	l.SubscribeLifecycle(p.stateChanged)
	if o.active {
		p.events.emit("ready", nil)
	}
	if err := l.Open(context.Background(), hsms.OpenBackground); err != nil {
		return err
	}
	if !o.active {
		<-l.listening
		p.events.emit("ready", nil)
	}
	lines := bufio.NewScanner(os.Stdin)
	lines.Buffer(nil, longestLine)
	for lines.Scan() && p.perform(lines.Bytes()) {
	}
	return l.Close()
}

func (p *peer) stateChanged(event hsms.LifecycleEvent) {
	switch {
	case event.Current == hsms.SelectedState:
		p.events.emit("selected", nil)
	case event.Current == hsms.NotConnectedState && event.Previous != hsms.NotConnectedState:
		p.events.emit("closed", nil)
	}
}
