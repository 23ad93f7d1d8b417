package main

import (
	"bytes"
	"fmt"
	"os"
	"path/filepath"
	"time"

	"github.com/arloliu/go-secs/v2/secs2"
	"github.com/arloliu/go-secs/v2/sml"
)

const (
	warmUp   = 100 * time.Millisecond
	measured = 300 * time.Millisecond
)

var sink float64 // keeps what is computed from being left out

func nanoseconds(operation func() float64) float64 {
	times := 0
	start := time.Now()
	for time.Since(start) < warmUp || times == 0 {
		sink += operation()
		times++
	}
	each := time.Since(start) / time.Duration(times)
	count := max(1, int(measured/max(1, each)))
	begin := time.Now()
	for range count {
		sink += operation()
	}
	return float64(time.Since(begin).Nanoseconds()) / float64(count)
}

// measureCodec times each body. The decoder is the one that takes the buffer over, as the stack itself does with what
// it reads from a socket; text and bytes of its items are parts of that buffer.
func measureCodec(folder string) (map[string]float64, error) {
	prepareValues()
	figures := map[string]float64{}
	for _, w := range workloads {
		body, err := os.ReadFile(filepath.Join(folder, w.name+".bin"))
		if err != nil {
			return nil, err
		}
		ready := w.build()
		if !bytes.Equal(ready.ToBytes(), body) {
			return nil, fmt.Errorf("%s is encoded in another way", w.name)
		}
		figures[w.name+"_decode_ns"] = nanoseconds(func() float64 {
			item, err := secs2.DecodeOwned(body)
			if err != nil {
				panic(err)
			}
			return readTree(item)
		})
		figures[w.name+"_encode_ns"] = nanoseconds(func() float64 { return float64(len(w.build().ToBytes())) })
		figures[w.name+"_encode_ready_ns"] = nanoseconds(func() float64 { return float64(len(ready.ToBytes())) })
		if w.name == "w1a" {
			figures["w1a_sml_ns"] = nanoseconds(func() float64 { return float64(len(sml.Encode(ready))) })
		}
	}
	return figures, nil
}
