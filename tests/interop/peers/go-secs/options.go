package main

import (
	"flag"
	"fmt"
	"time"
)

// options is the command line of a peer.
type options struct {
	equipment bool
	transport string
	active    bool
	address   string
	port      int
	device    uint16
	times     map[string]time.Duration
}

func oneOf(name, value string, words ...string) error {
	for _, word := range words {
		if value == word {
			return nil
		}
	}
	return fmt.Errorf("--%s must be one of %v", name, words)
}

func readOptions(arguments []string) (options, error) {
	flags := flag.NewFlagSet("peer", flag.ContinueOnError)
	role := flags.String("role", "", "host or equipment")
	transport := flags.String("transport", "", "hsms or secs1tcp")
	mode := flags.String("mode", "", "active or passive")
	address := flags.String("address", "127.0.0.1", "address to connect to or to listen at")
	port := flags.Int("port", 0, "TCP port")
	device := flags.Uint("device", 0, "device ID")
	flags.Bool("r-bit", false, "taken for the sake of other stacks: this one always sets the R-bit")
	flags.String("device-file", "", "serial port; the stack has none")
	flags.Int("baud", 9600, "speed of a serial port; the stack has none")
	times := map[string]*float64{}
	for _, name := range []string{"t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "linktest"} {
		times[name] = flags.Float64(name, -1, "seconds")
	}
	if err := flags.Parse(arguments); err != nil {
		return options{}, err
	}
	for _, err := range []error{
		oneOf("role", *role, "host", "equipment"),
		oneOf("transport", *transport, "hsms", "secs1tcp"),
		oneOf("mode", *mode, "active", "passive"),
	} {
		if err != nil {
			return options{}, err
		}
	}
	result := options{
		equipment: *role == "equipment",
		transport: *transport,
		active:    *mode == "active",
		address:   *address,
		port:      *port,
		device:    uint16(*device),
		times:     map[string]time.Duration{},
	}
	for name, seconds := range times {
		if *seconds >= 0 {
			result.times[name] = time.Duration(*seconds * float64(time.Second))
		}
	}
	return result, nil
}
