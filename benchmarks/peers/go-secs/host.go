package main

import (
	"context"
	"errors"
	"fmt"
	"os"
	"path/filepath"
	"slices"
	"sync"
	"time"

	"github.com/arloliu/go-secs/v2/hsms"
	"github.com/arloliu/go-secs/v2/hsmsss"
	"github.com/arloliu/go-secs/v2/logger"
	"github.com/arloliu/go-secs/v2/secs2"
)

// message is a primary of the race.
type message struct {
	stream, function byte
	body             string
}

var messages = map[string]message{
	"a":   {1, 1, ""},
	"b":   {2, 101, "w1a"},
	"w3a": {7, 3, "w3a"},
	"w3b": {7, 3, "w3b"},
}

func (m message) item(folder string) (secs2.Item, error) {
	if m.body == "" {
		return nil, nil
	}
	body, err := os.ReadFile(filepath.Join(folder, m.body+".bin"))
	if err != nil {
		return nil, err
	}
	return secs2.DecodeOwned(body)
}

func connect(port int) (hsms.Connection, error) {
	config, err := hsmsss.NewConfig("127.0.0.1", port, hsmsss.WithActive(), hsmsss.WithHostRole(),
		hsmsss.WithConnectionOption(hsms.WithSessionID(0)),
		hsmsss.WithConnectionOption(hsms.WithLogger(logger.NewSlog(logger.ErrorLevel, false))))
	if err != nil {
		return nil, err
	}
	connection, err := hsmsss.New(config)
	if err != nil {
		return nil, err
	}
	ctx, cancel := context.WithTimeout(context.Background(), 10*time.Second)
	defer cancel()
	return connection, connection.Open(ctx, hsms.OpenWaitSelected)
}

func connectAll(first, links int) ([]hsms.Connection, error) {
	var connections []hsms.Connection
	for i := range links {
		connection, err := connect(first + i)
		if err != nil {
			return nil, err
		}
		connections = append(connections, connection)
	}
	return connections, nil
}

// exchange sends one request and reads its reply.
func exchange(connection hsms.Connection, m message, item secs2.Item) (float64, error) {
	reply, err := connection.SendDataMessage(context.Background(), m.stream, m.function, true, item)
	if err != nil {
		return 0, err
	}
	if reply.Function() != m.function+1 {
		return 0, fmt.Errorf("S%dF%d came", reply.Stream(), reply.Function())
	}
	body, err := reply.Item()
	if err != nil {
		return 0, err
	}
	return readTree(body), nil
}

// measureRoundTrips keeps depth requests open on each connection, one goroutine for each.
func measureRoundTrips(connections []hsms.Connection, depth int, seconds float64, m message, item secs2.Item) (map[string]float64, error) {
	duration := func(s float64) time.Duration { return time.Duration(s * float64(time.Second)) }
	begin := time.Now().Add(duration(max(0.3, seconds/3)))
	end := begin.Add(duration(seconds))
	var mutex sync.Mutex
	var all []time.Duration
	var failure error
	var group sync.WaitGroup
	for _, connection := range connections {
		for range depth {
			group.Go(func() {
				var times []time.Duration
				var err error
				for err == nil {
					sent := time.Now()
					if !sent.Before(end) {
						break
					}
					_, err = exchange(connection, m, item)
					if done := time.Now(); err == nil && !sent.Before(begin) && done.Before(end) {
						times = append(times, done.Sub(sent))
					}
				}
				mutex.Lock()
				defer mutex.Unlock()
				all = append(all, times...)
				failure = errors.Join(failure, err)
			})
		}
	}
	group.Wait()
	if failure != nil {
		return nil, failure
	}
	if len(all) == 0 {
		return nil, errors.New("no round trip in the time")
	}
	slices.Sort(all)
	quantile := func(hundredths int) float64 {
		return float64(all[(len(all)-1)*hundredths/100].Nanoseconds()) / 1000
	}
	return map[string]float64{
		"p50_us": quantile(50), "p99_us": quantile(99),
		"per_s": float64(len(all)) / seconds, "count": float64(len(all)),
	}, nil
}
