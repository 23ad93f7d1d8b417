// The race program on go-secs: ../README.md tells its interface.
package main

import (
	"encoding/json"
	"errors"
	"fmt"
	"io"
	"os"
	"runtime"
	"runtime/debug"
	"strconv"
)

var errUsage = errors.New("run version|codec|host|links|start|idle ...")

func printLine(object any) error { return json.NewEncoder(os.Stdout).Encode(object) }

func version() error {
	build, known := debug.ReadBuildInfo()
	if !known {
		return errors.New("the program does not know what it was built from")
	}
	for _, module := range build.Deps {
		if module.Path == "github.com/arloliu/go-secs/v2" {
			return printLine(map[string]string{
				"name": "go-secs", "version": module.Version, "runtime": runtime.Version(),
			})
		}
	}
	return errors.New("the program does not know the version of its stack")
}

func codec(folder string) error {
	figures, err := measureCodec(folder)
	if err != nil {
		return err
	}
	return printLine(figures)
}

func numbersOf(arguments []string) ([]float64, error) {
	var result []float64
	for _, argument := range arguments {
		number, err := strconv.ParseFloat(argument, 64)
		if err != nil {
			return nil, err
		}
		result = append(result, number)
	}
	return result, nil
}

func host(port, depth int, name string, seconds float64, folder string) error {
	m, known := messages[name]
	if !known {
		return errUsage
	}
	item, err := m.item(folder)
	if err != nil {
		return err
	}
	connections, err := connectAll(port, 1)
	if err != nil {
		return err
	}
	figures, err := measureRoundTrips(connections, depth, seconds, m, item)
	if err != nil {
		return err
	}
	return printLine(figures)
}

func links(first, count int, seconds float64) error {
	connections, err := connectAll(first, count)
	if err != nil {
		return err
	}
	figures, err := measureRoundTrips(connections, 1, seconds, messages["a"], nil)
	if err != nil {
		return err
	}
	return printLine(figures)
}

func start(port int) error {
	connection, err := connect(port)
	if err != nil {
		return err
	}
	_, err = exchange(connection, messages["a"], nil)
	return err
}

func idle(first, count int) error {
	if _, err := connectAll(first, count); err != nil {
		return err
	}
	if err := printLine(map[string]string{"event": "ready"}); err != nil {
		return err
	}
	_, err := io.Copy(io.Discard, os.Stdin)
	return err
}

func run(arguments []string) error {
	what, rest := arguments[0], arguments[1:]
	switch {
	case what == "version" && len(rest) == 0:
		return version()
	case what == "codec" && len(rest) == 1:
		return codec(rest[0])
	case what == "host" && len(rest) == 5:
		values, err := numbersOf([]string{rest[0], rest[2], rest[3]})
		if err != nil {
			return err
		}
		return host(int(values[0]), int(values[1]), rest[1], values[2], rest[4])
	}
	values, err := numbersOf(rest)
	if err != nil {
		return err
	}
	switch {
	case what == "links" && len(values) == 3:
		return links(int(values[0]), int(values[1]), values[2])
	case what == "start" && len(values) == 1:
		return start(int(values[0]))
	case what == "idle" && len(values) == 2:
		return idle(int(values[0]), int(values[1]))
	}
	return errUsage
}

func main() {
	err := errUsage
	if len(os.Args) > 1 {
		err = run(os.Args[1:])
	}
	if err != nil {
		fmt.Fprintln(os.Stderr, err)
		if errors.Is(err, errUsage) {
			os.Exit(2)
		}
		os.Exit(1)
	}
}
